#include "core/HexText.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr char upperHexDigits[] = "0123456789ABCDEF";

// The numbers between the braces, or of a text without any, if each is written as 0xFF.
std::optional<QByteArray> bytesOfArray(QStringView text)
{
    const qsizetype open = text.indexOf('{'_L1);
    const qsizetype close = text.indexOf('}'_L1);
    if (open >= 0 && close > open)
        text = text.sliced(open + 1, close - open - 1);
    static const QRegularExpression separators(u"[\\s,]+"_s);
    QByteArray bytes;
    for (const QStringView number : text.split(separators, Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const uint value = number.mid(2).toUInt(&isNumber, 16);
        if (!number.startsWith("0x"_L1, Qt::CaseInsensitive) || number.size() > 4 || !isNumber)
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
    static const QRegularExpression separators(uR"([\s,;:])"_s);
    static const QRegularExpression hexDigits(u"^[0-9A-Fa-f]+$"_s);

    QString digits = text.trimmed();
    digits.remove(separators);
    if (digits.size() % 2 == 0 && hexDigits.match(digits).hasMatch())
        return QByteArray::fromHex(digits.toLatin1());
    return std::nullopt;
}

QByteArray pastedBytes(const QString &text)
{
    if (const auto bytes = bytesOfArray(text))
        return *bytes;
    if (const auto bytes = bytesOfHex(text))
        return *bytes;
    return text.isValidUtf16() ? text.toUtf8() : QByteArray();
}
