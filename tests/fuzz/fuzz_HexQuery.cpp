// What the user types into the hex search: the whole input is the query.

#include "FuzzSupport.h"
#include "core/FileTools.h"

using namespace Qt::StringLiterals;

namespace {

bool isSeparator(QChar c)
{
    static const QString separators = u" \t\n\v\f\r,;:"_s;
    return separators.contains(c);
}

int digitValue(QChar c)
{
    static const QString digits = u"0123456789abcdef"_s;
    return c.unicode() < 128 ? static_cast<int>(digits.indexOf(c.toLower())) : -1;
}

// The bytes that the digits of `text` encode, or nothing when it holds anything else or an odd count.
QByteArray digitPairs(const QString &text)
{
    QByteArray bytes;
    int count = 0;
    int high = 0;
    for (const QChar c : text) {
        if (isSeparator(c))
            continue;
        const int value = digitValue(c);
        if (value < 0)
            return {};
        if (++count % 2 == 0)
            bytes.append(static_cast<char>(high * 16 + value));
        high = value;
    }
    return count % 2 == 0 ? bytes : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString query = FuzzInput(data, size).takeRestAsText();
    const QByteArray bytes = FileTools::parseHexQuery(query);
    const QString trimmed = query.trimmed();

    FUZZ_EXPECT(bytes.isEmpty() == trimmed.isEmpty());
    const QByteArray pairs = digitPairs(trimmed);
    FUZZ_EXPECT(bytes == (pairs.isEmpty() ? trimmed.toUtf8() : pairs));
    FUZZ_EXPECT(FileTools::parseHexQuery(u" \t"_s + query + u"\r\n"_s) == bytes);

    // Whatever bytes there are, their digits are a query for them.
    const QByteArray raw(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    FUZZ_EXPECT(FileTools::parseHexQuery(QString::fromLatin1(raw.toHex(','))) == raw);
    FUZZ_EXPECT(FileTools::parseHexQuery(QString::fromLatin1(raw.toHex().toUpper())) == raw);
    return 0;
}
