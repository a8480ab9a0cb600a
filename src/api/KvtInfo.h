#pragma once

#include <QString>
#include <QVariantMap>

/// The identifiers of an open file after the worker's answer `json` was merged into `identifiers`: texts
/// under "vin", "serial", "mainOS", "system", "fuel", "speedometer", "engineDiag", "engineOp", "interfaceID",
/// "created" and "editorVersion", and a list of module entries under "modules". What the answer does not
/// name, or an answer that does not parse, leaves the identifiers as they are. Pure.
QVariantMap mergeKvtInfo(const QVariantMap &identifiers, const QString &json);
