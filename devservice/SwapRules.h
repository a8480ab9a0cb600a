#pragma once

#include "SampleContainer.h"

/// A segment of the base that a segment of the donor fits into. Both are counted from 0 through all modules.
struct SwapCandidate
{
    int targetIndex = 0;
    int donorIndex = 0;
    QString name;
    qsizetype size = 0;
    QString label;
    bool operator==(const SwapCandidate &) const = default;
};

/// Which segments fit and what a swap makes of the base. Pure.
namespace SwapRules {

/// At most one for each segment of the base, in their order: a donor segment of the same name and size, of
/// the module at the same place where that has one, else the first.
QList<SwapCandidate> candidates(const SampleTune &base, const SampleTune &donor);

/// The candidates that "0,2,4" names by their places; none for an empty text. Nothing when the text names no
/// place, or one that is not there.
std::optional<QList<SwapCandidate>> chosen(const QList<SwapCandidate> &candidates, const QString &places);

/// The base's file with the donor's bytes in the chosen segments and no other byte changed. Both files are
/// sample containers, and the candidates are theirs.
QByteArray swapped(const QByteArray &base, const QByteArray &donor, const QList<SwapCandidate> &candidates);

} // namespace SwapRules
