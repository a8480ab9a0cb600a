// The comparison of versions: two of them, each a field.

#include "FuzzSupport.h"
#include "api/UpdateCheck.h"

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString a = input.takeTextField();
    const QString b = input.takeTextField();

    FUZZ_EXPECT(!isNewerVersion(a, a));
    FUZZ_EXPECT(!(isNewerVersion(a, b) && isNewerVersion(b, a)));
    // A missing part counts as 0, and so does one that is not a number.
    for (const QString &nothing : {u".0"_s, u"."_s, u".rc1"_s}) {
        FUZZ_EXPECT(!isNewerVersion(a + nothing, a) && !isNewerVersion(a, a + nothing));
        FUZZ_EXPECT(isNewerVersion(a + nothing, b) == isNewerVersion(a, b));
    }
    FUZZ_EXPECT(isNewerVersion(a + u".1"_s, a));
    FUZZ_EXPECT(isNewerVersion(a, a + u".-1"_s));
    // The first part that differs decides.
    FUZZ_EXPECT(isNewerVersion(u"2."_s + a, u"1."_s + b));
    FUZZ_EXPECT(isNewerVersion(u"7."_s + a, u"7."_s + b) == isNewerVersion(a, b));
    return 0;
}
