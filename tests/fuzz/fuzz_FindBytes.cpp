// Finding bytes: the place to begin at (two bytes, signed), the needle as a field, and what to search.

#include "FuzzSupport.h"
#include "core/FileTools.h"

#include <algorithm>

namespace {

int naiveFind(const QByteArray &haystack, const QByteArray &needle, int from)
{
    const qsizetype last = haystack.size() - needle.size();
    for (qsizetype at = std::max(from, 0); at <= last && !needle.isEmpty(); ++at) {
        if (std::equal(needle.begin(), needle.end(), haystack.begin() + at))
            return static_cast<int>(at);
    }
    return -1;
}

void findAll(const QByteArray &haystack, const QByteArray &needle)
{
    int previous = -1;
    for (int at = FileTools::findBytes(haystack, needle, 0); at >= 0;
         at = FileTools::findBytes(haystack, needle, previous + 1)) {
        FUZZ_EXPECT(at > previous);
        FUZZ_EXPECT(haystack.sliced(at, needle.size()) == needle);
        FUZZ_EXPECT(FileTools::findBytes(haystack, needle, at) == at);
        previous = at;
    }
    FUZZ_EXPECT(needle.isEmpty() || naiveFind(haystack, needle, previous + 1) == -1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int from = input.takeShort();
    const QByteArray needle = input.takeField();
    const QByteArray haystack = input.takeRest();

    const int found = FileTools::findBytes(haystack, needle, from);
    FUZZ_EXPECT(found == naiveFind(haystack, needle, from));
    FUZZ_EXPECT(found == -1 || (found >= from && found + needle.size() <= haystack.size()));
    FUZZ_EXPECT(FileTools::findBytes(haystack, {}, from) == -1);
    FUZZ_EXPECT(FileTools::findBytes(haystack, haystack, 0) == (haystack.isEmpty() ? -1 : 0));
    findAll(haystack, needle);
    return 0;
}
