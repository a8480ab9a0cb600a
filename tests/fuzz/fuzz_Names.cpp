// File names, OS numbers and other texts from outside: the whole input is one text.

#include "FuzzSupport.h"
#include "api/StoreAnswers.h"
#include "core/FileTools.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool isReserved(QChar c)
{
    static const QString reserved = u"\\/:*?\"<>|"_s;
    return reserved.contains(c);
}

bool isAsciiDigit(QChar c)
{
    return c >= '0'_L1 && c <= '9'_L1;
}

bool isTokenCharacter(QChar c)
{
    return isAsciiDigit(c) || (c >= 'A'_L1 && c <= 'Z'_L1);
}

QString firstToken(const QString &text)
{
    const QString upper = text.toUpper();
    QString run;
    for (const QChar c : upper) {
        if (isTokenCharacter(c)) {
            run.append(c);
            continue;
        }
        if (run.size() >= 6)
            break;
        run.clear();
    }
    return run.size() >= 6 ? run : QString();
}

QString firstYear(const QString &text)
{
    for (qsizetype at = 0; at + 4 <= text.size(); ++at) {
        const QString four = text.sliced(at, 4);
        const bool isCentury = four.startsWith(u"19"_s) || four.startsWith(u"20"_s);
        if (isCentury && std::all_of(four.begin(), four.end(), isAsciiDigit))
            return four;
    }
    return {};
}

void sanitizing(const QString &text)
{
    const QString name = FileTools::sanitizeName(text);
    FUZZ_EXPECT(std::none_of(name.begin(), name.end(), isReserved));
    FUZZ_EXPECT(!name.trimmed().isEmpty());
    FUZZ_EXPECT(FileTools::sanitizeName(name) == name);
    if (text.trimmed().isEmpty()) {
        FUZZ_EXPECT(name == u"file"_s);
        return;
    }
    FUZZ_EXPECT(name.size() == text.size());
    for (qsizetype i = 0; i < text.size(); ++i)
        FUZZ_EXPECT(name.at(i) == (isReserved(text.at(i)) ? '_'_L1 : text.at(i)));
}

void osNumbers(const QString &text)
{
    const auto isDigit = [](QChar c) { return c.isDigit(); };
    const bool isWeak =
        text.size() >= 7 && text.size() <= 9 && std::all_of(text.begin(), text.end(), isDigit);
    FUZZ_EXPECT(FileTools::isWeakNumericOs(text) == isWeak);
    const bool isCummins = FileTools::isCumminsStyleOs(text);
    FUZZ_EXPECT(!isCummins || (text.size() == 10 && !isWeak));
    FUZZ_EXPECT(!isCummins || FileTools::isCumminsStyleOs(text.toUpper().left(10)));
    const QString upper = text.toUpper();
    if (text.size() == 10 && upper.size() == 10) {
        const bool begins = upper.at(0).isDigit() || (isTokenCharacter(upper.at(0)));
        const bool ends = std::all_of(upper.begin() + 8, upper.end(),
                                      [](QChar c) { return isTokenCharacter(c) && !isAsciiDigit(c); });
        FUZZ_EXPECT(isCummins
                    == (begins && ends && std::all_of(upper.begin() + 1, upper.begin() + 8, isDigit)));
    }
}

void extraction(const QString &text)
{
    const QString token = FileTools::osTokenFromName(text);
    FUZZ_EXPECT(token == firstToken(text));
    FUZZ_EXPECT(FileTools::osTokenFromName(token) == token);
    const QString year = FileTools::yearFromName(text);
    FUZZ_EXPECT(year == firstYear(text));
    FUZZ_EXPECT(FileTools::yearFromName(year) == year);
}

// A file name from the service, joined to a folder, stays in that folder.
void fileNames(const QString &text)
{
    const QString bare = bareFileName(text);
    for (const char16_t c : {u'/', u'\\', u'\0'})
        FUZZ_EXPECT(!bare.contains(QChar(c)));
    FUZZ_EXPECT(bare != u"."_s && bare != u".."_s);
    FUZZ_EXPECT(bareFileName(bare) == bare);
    FUZZ_EXPECT(bareFileName(u"../a\\"_s + text) == bare);

    const QString patched = patchedName(text);
    FUZZ_EXPECT(!patched.contains('/'_L1));
    FUZZ_EXPECT(patched.endsWith(u"_patched.bin"_s));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = FuzzInput(data, size).takeRestAsText();
    sanitizing(text);
    osNumbers(text);
    extraction(text);
    fileNames(text);
    return 0;
}
