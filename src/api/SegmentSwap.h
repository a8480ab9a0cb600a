#pragma once

#include <QJsonObject>
#include <QString>
#include <QVariantList>

// The swaps that the service offers between two files, and those that the user keeps. Pure.

/// One map for each of the preview answer's candidates: its own members, a "label" where it brought none, and
/// the client's "index" and "selected".
QVariantList decodeSwapCandidates(const QJsonObject &answer);
/// The indices of the selected candidates, as the service takes them: "0,2,4".
QString selectedCandidateIndices(const QVariantList &candidates);
