#include "core/HexText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr char upperHexDigits[] = "0123456789ABCDEF";

int digitOf(QChar character)
{
    const char16_t c = character.unicode();
    if (c >= '0' && c <= '9')
        return c - '0';
    const int letter = (c | 0x20) - 'a';
    return letter >= 0 && letter < 6 && c < 0x80 ? letter + 10 : -1;
}

bool isOneOf(QChar character, QLatin1StringView set)
{
    return set.contains(character);
}

constexpr QLatin1StringView blanks(" \t\n\v\f\r");

// The numbers of an initializer in C, or of a list without braces, if each is written as 0xFF.
std::optional<QByteArray> bytesOfArray(QStringView text)
{
    if (const qsizetype open = text.indexOf('{'_L1); open >= 0) {
        const qsizetype close = text.lastIndexOf('}'_L1);
        const QStringView before = text.first(open).trimmed();
        const QStringView after = close < open ? QStringView(u"?") : text.sliced(close + 1).trimmed();
        if ((!before.isEmpty() && !before.endsWith('='_L1)) || (!after.isEmpty() && after != ';'_L1))
            return std::nullopt;
        text = text.sliced(open + 1, close - open - 1);
    }
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size();) {
        if (isOneOf(text[i], blanks) || text[i] == ','_L1) {
            ++i;
            continue;
        }
        if (text.size() - i < 3 || text[i] != '0'_L1 || (text[i + 1].unicode() | 0x20) != 'x')
            return std::nullopt;
        i += 2;
        int value = digitOf(text[i++]);
        if (value >= 0 && i < text.size() && digitOf(text[i]) >= 0)
            value = value * 16 + digitOf(text[i++]);
        if (value < 0 || (i < text.size() && !isOneOf(text[i], blanks) && text[i] != ','_L1))
            return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return bytes.isEmpty() ? std::nullopt : std::optional(bytes);
}

} // namespace

QString hexText(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return {};
    QString text(bytes.size() * 3 - 1, ' '_L1);
    QChar *out = text.data();
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out[0] = QLatin1Char(upperHexDigits[byte >> 4]);
        out[1] = QLatin1Char(upperHexDigits[byte & 0xF]);
        out += 3;
    }
    return text;
}

QString asciiText(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    std::transform(bytes.begin(), bytes.end(), text.begin(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return QLatin1Char(byte >= 32 && byte <= 126 ? c : '.');
    });
    return text;
}

QString cArrayText(QByteArrayView bytes)
{
    QString text = u"const unsigned char bytes[%1] = {"_s.arg(bytes.size());
    text.reserve(text.size() + bytes.size() * 6 + bytes.size() / 16 * 4 + 8);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += i % 16 == 0 ? "\n    0x"_L1 : " 0x"_L1;
        text += QLatin1Char(upperHexDigits[byte >> 4]);
        text += QLatin1Char(upperHexDigits[byte & 0xF]);
        text += ','_L1;
    }
    return text + "\n};\n"_L1;
}

QString countText(int count, const QString &unit)
{
    return u"%1 %2%3"_s.arg(QString::number(count), unit, count == 1 ? QString() : u"s"_s);
}

QString offsetText(qint64 offset)
{
    return QString::number(offset, 16).toUpper();
}

std::optional<QByteArray> bytesOfHex(const QString &text)
{
    QByteArray bytes;
    int high = -1;
    for (const QChar character : QStringView(text).trimmed()) {
        const int digit = digitOf(character);
        if (digit < 0) {
            if (!isOneOf(character, blanks) && !isOneOf(character, ",;:"_L1))
                return std::nullopt;
        } else if (high < 0) {
            high = digit;
        } else {
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        }
    }
    return bytes.isEmpty() || high >= 0 ? std::nullopt : std::optional(bytes);
}

QByteArray pastedBytes(const QString &text)
{
    if (const auto bytes = bytesOfArray(text))
        return *bytes;
    if (const auto bytes = bytesOfHex(text))
        return *bytes;
    return text.isValidUtf16() ? text.toUtf8() : QByteArray();
}
