#pragma once

#include "SampleContainer.h"

/// The stand-in's own XML text under the suffix of definition files; NOT the format of real ones.
namespace SampleDefinition {

/// One table for each segment: its name, its offset in a BIN and its size.
QByteArray write(const QString &title, const QString &os, const QList<SampleSegment> &segments);

} // namespace SampleDefinition
