#include "BinPatches.h"

using namespace Qt::StringLiterals;

namespace {

constexpr BinPatch patches[] = {
    {301, "Speed limit"_L1, 5, 0x0100, "FFFF"_L1},        {302, "Idle speed"_L1, 10, 0x0240, "02BC02BC"_L1},
    {303, "Marker"_L1, 0, 0x0000, "4B56545041544348"_L1}, {304, "Check only"_L1, 0, 0x0000, ""_L1},
    {305, "Everything"_L1, 500, 0x0400, "00000000"_L1},
};

} // namespace

std::span<const BinPatch> BinPatches::all()
{
    return patches;
}

const BinPatch *BinPatches::find(int id)
{
    for (const BinPatch &patch : patches) {
        if (patch.id == id)
            return &patch;
    }
    return nullptr;
}

std::optional<QByteArray> BinPatches::applied(const BinPatch &patch, QByteArray bin)
{
    const QByteArray written = patch.written();
    if (patch.offset + written.size() > bin.size())
        return std::nullopt;
    return bin.replace(patch.offset, written.size(), written);
}
