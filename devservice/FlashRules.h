#pragma once

#include "SampleContainer.h"

/// What a BIN is to the stand-in: the segments of a container, one behind the other. Pure.
namespace FlashRules {

/// The segments of all modules in their order.
QList<SampleSegment> segments(const SampleTune &tune);

QByteArray toBin(const SampleTune &tune);

/// The tune with the BIN's bytes in its segments. Where the BIN ends early the segments keep their own bytes;
/// what is left of it behind the last segment is dropped.
SampleTune withBin(SampleTune tune, const QByteArray &bin);

} // namespace FlashRules
