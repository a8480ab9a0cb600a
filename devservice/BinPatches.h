#pragma once

#include <QByteArray>
#include <QLatin1StringView>

#include <optional>
#include <span>

/// Writes bytes over a BIN's own at a fixed place.
struct BinPatch
{
    int id;
    QLatin1StringView variant;
    int credits;
    qsizetype offset;
    /// In hexadecimal; empty for a patch that changes nothing.
    QLatin1StringView bytes;

    QByteArray written() const { return QByteArray::fromHex(QByteArray(bytes.data(), bytes.size())); }
};

/// Pure.
namespace BinPatches {

std::span<const BinPatch> all();
/// Null for an unknown number.
const BinPatch *find(int id);
/// Nothing when the BIN ends before the last byte that the patch writes.
std::optional<QByteArray> applied(const BinPatch &patch, QByteArray bin);

} // namespace BinPatches
