#include "FlashRules.h"

QList<SampleSegment> FlashRules::segments(const SampleTune &tune)
{
    QList<SampleSegment> result;
    for (const SampleModule &module : tune.modules)
        result.append(module.segments);
    return result;
}

QByteArray FlashRules::toBin(const SampleTune &tune)
{
    QByteArray bin;
    for (const SampleSegment &segment : segments(tune))
        bin.append(segment.bytes);
    return bin;
}

SampleTune FlashRules::withBin(SampleTune tune, const QByteArray &bin)
{
    qsizetype position = 0;
    for (SampleModule &module : tune.modules) {
        for (SampleSegment &segment : module.segments) {
            const QByteArray piece = bin.mid(position, segment.bytes.size());
            segment.bytes.replace(0, piece.size(), piece);
            position += segment.bytes.size();
        }
    }
    return tune;
}
