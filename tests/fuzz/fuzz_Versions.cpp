// The comparison of versions: two of them, each a field.

#include "FuzzSupport.h"
#include "api/UpdateCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString a = input.takeTextField();
    const QString b = input.takeTextField();

    FUZZ_EXPECT(!isNewerVersion(a, a));
    FUZZ_EXPECT(!(isNewerVersion(a, b) && isNewerVersion(b, a)));
    // A missing part counts as 0, and so does one that is no number.
    for (const QString &nothing : {QStringLiteral(".0"), QStringLiteral("."), QStringLiteral(".rc1")}) {
        FUZZ_EXPECT(!isNewerVersion(a + nothing, a) && !isNewerVersion(a, a + nothing));
        FUZZ_EXPECT(isNewerVersion(a + nothing, b) == isNewerVersion(a, b));
    }
    FUZZ_EXPECT(isNewerVersion(a + QStringLiteral(".1"), a));
    FUZZ_EXPECT(isNewerVersion(a, a + QStringLiteral(".-1")));
    // The first part that differs decides.
    FUZZ_EXPECT(isNewerVersion(QStringLiteral("2.") + a, QStringLiteral("1.") + b));
    FUZZ_EXPECT(isNewerVersion(QStringLiteral("7.") + a, QStringLiteral("7.") + b) == isNewerVersion(a, b));
    return 0;
}
