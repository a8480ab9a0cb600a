#pragma once

#include <QJsonObject>
#include <QVariantMap>

/// The identifiers of an open file after the worker's `answer` was merged into `identifiers`: texts
/// under "vin", "serial", "mainOS", "system", "fuel", "speedometer", "engineDiag", "engineOp", "interfaceID",
/// "created" and "editorVersion", and a list of module entries under "modules". What the answer does not
/// name stays as it is. Pure.
QVariantMap mergeKvtInfo(const QVariantMap &identifiers, const QJsonObject &answer);
