#include "SwapRules.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

struct PlacedSegment
{
    qsizetype module;
    QString moduleTitle;
    QString name;
    qsizetype size;
};

QList<PlacedSegment> placedSegments(const SampleTune &tune)
{
    QList<PlacedSegment> result;
    for (qsizetype i = 0; i < tune.modules.size(); ++i) {
        for (const SampleSegment &segment : tune.modules[i].segments)
            result.append({i, tune.modules[i].title, segment.name, segment.bytes.size()});
    }
    return result;
}

/// -1 when none fits.
qsizetype fittingSegment(const QList<PlacedSegment> &donors, const PlacedSegment &target)
{
    qsizetype found = -1;
    for (qsizetype i = 0; i < donors.size(); ++i) {
        if (donors[i].name != target.name || donors[i].size != target.size)
            continue;
        if (donors[i].module == target.module)
            return i;
        if (found < 0)
            found = i;
    }
    return found;
}

} // namespace

QList<SwapCandidate> SwapRules::candidates(const SampleTune &base, const SampleTune &donor)
{
    const QList<PlacedSegment> targets = placedSegments(base);
    const QList<PlacedSegment> donors = placedSegments(donor);
    QList<SwapCandidate> result;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const PlacedSegment &target = targets[i];
        const qsizetype fitting = fittingSegment(donors, target);
        if (fitting < 0)
            continue;
        const QString label = u"%1: %2 (%3 bytes)"_s.arg(target.moduleTitle, target.name).arg(target.size);
        result.append({int(i), int(fitting), target.name, target.size, label});
    }
    return result;
}

std::optional<QList<SwapCandidate>> SwapRules::chosen(const QList<SwapCandidate> &candidates,
                                                      const QString &places)
{
    QList<SwapCandidate> result;
    if (places.isEmpty())
        return result;
    for (const QString &text : places.split(u',')) {
        bool isNumber = false;
        const int place = text.toInt(&isNumber);
        if (!isNumber || place < 0 || place >= candidates.size())
            return std::nullopt;
        result.append(candidates[place]);
    }
    return result;
}

QByteArray SwapRules::swapped(const QByteArray &base, const QByteArray &donor,
                              const QList<SwapCandidate> &candidates)
{
    const QList<qsizetype> targets = SampleContainer::segmentOffsets(base);
    const QList<qsizetype> donors = SampleContainer::segmentOffsets(donor);
    QByteArray result = base;
    for (const SwapCandidate &candidate : candidates)
        result.replace(targets[candidate.targetIndex], candidate.size,
                       donor.mid(donors[candidate.donorIndex], candidate.size));
    return result;
}
