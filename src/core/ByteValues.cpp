#include "core/ByteValues.h"

#include <QCryptographicHash>
#include <QLocale>
#include <QtEndian>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <numeric>
#include <type_traits>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

// Qt knows the shortest text of a double only.
QString shortestText(float value)
{
    char text[32];
    const auto last =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::scientific).ptr;
    const auto digits =
        std::count_if(text, std::find(text, last, 'e'), [](char c) { return c >= '0' && c <= '9'; });
    return QString::number(double(value), 'g', static_cast<int>(digits));
}

template <typename T> QString textOf(T value)
{
    if constexpr (std::is_same_v<T, float>)
        return shortestText(value);
    else if constexpr (std::is_same_v<T, double>)
        return QString::number(value, 'g', QLocale::FloatingPointShortest);
    else
        return QString::number(value);
}

template <typename T> QString little(const char *bytes)
{
    return textOf(qFromLittleEndian<T>(bytes));
}

template <typename T> QString big(const char *bytes)
{
    return textOf(qFromBigEndian<T>(bytes));
}

QString binary(const char *byte)
{
    return u"%1"_s.arg(static_cast<uchar>(*byte), 8, 2, '0'_L1);
}

QString character(const char *byte)
{
    return QString(QLatin1Char(*byte >= 32 && *byte <= 126 ? *byte : '.'));
}

template <typename T> std::optional<T> valueOf(const QString &text)
{
    QByteArray digits = text.trimmed().toLatin1();
    T value{};
    std::from_chars_result read{};
    if constexpr (std::is_floating_point_v<T>) {
        read = std::from_chars(digits.cbegin(), digits.cend(), value);
    } else {
        const bool isHex = digits.startsWith("0x") || digits.startsWith("0X");
        digits.remove(0, isHex ? 2 : 0);
        read = std::from_chars(digits.cbegin(), digits.cend(), value, isHex ? 16 : 10);
    }
    return read.ec == std::errc() && read.ptr == digits.cend() ? std::optional(value) : std::nullopt;
}

template <typename T> std::optional<QByteArray> bytesOfNumber(const QString &text, bool bigEndian)
{
    const std::optional<T> value = valueOf<T>(text);
    if (!value)
        return std::nullopt;
    QByteArray bytes(sizeof(T), Qt::Uninitialized);
    if (bigEndian)
        qToBigEndian<T>(*value, bytes.data());
    else
        qToLittleEndian<T>(*value, bytes.data());
    return bytes;
}

std::optional<QByteArray> bytesOfBinary(const QString &text, bool)
{
    bool isValid = false;
    const uint value = text.trimmed().toUInt(&isValid, 2);
    return isValid && value <= 0xFF ? std::optional(QByteArray(1, static_cast<char>(value))) : std::nullopt;
}

std::optional<QByteArray> bytesOfCharacter(const QString &text, bool)
{
    const bool isPrintable = text.size() == 1 && text[0] >= u' ' && text[0] <= u'~';
    return isPrintable ? std::optional(text.toLatin1()) : std::nullopt;
}

struct Reading
{
    const char *name;
    qsizetype size;
    QString (*little)(const char *bytes);
    QString (*big)(const char *bytes);
    std::optional<QByteArray> (*bytesOf)(const QString &text, bool bigEndian);
};

template <typename T> constexpr Reading number(const char *name)
{
    return {name, sizeof(T), little<T>, sizeof(T) > 1 ? big<T> : nullptr, bytesOfNumber<T>};
}

constexpr Reading readings[] = {
    number<quint8>("UInt8"),
    number<qint8>("Int8"),
    number<quint16>("UInt16"),
    number<qint16>("Int16"),
    number<quint32>("UInt32"),
    number<qint32>("Int32"),
    number<quint64>("UInt64"),
    number<qint64>("Int64"),
    number<float>("Float"),
    number<double>("Double"),
    {"Binary", 1, binary, nullptr, bytesOfBinary},
    {"ASCII", 1, character, nullptr, bytesOfCharacter},
};

} // namespace

QList<ByteValues::Row> ByteValues::at(QByteArrayView bytes, qsizetype offset)
{
    QList<Row> rows;
    for (const Reading &reading : readings) {
        Row row{QLatin1String(reading.name), {}, {}, !reading.big};
        if (offset >= 0 && offset <= bytes.size() - reading.size) {
            row.littleEndian = reading.little(bytes.data() + offset);
            if (reading.big)
                row.bigEndian = reading.big(bytes.data() + offset);
        }
        rows.append(row);
    }
    return rows;
}

std::optional<QByteArray> ByteValues::bytesOf(int row, const QString &text, bool bigEndian)
{
    if (row < 0 || static_cast<size_t>(row) >= std::size(readings))
        return std::nullopt;
    return readings[row].bytesOf(text, bigEndian);
}

std::optional<ByteSums> ByteSums::of(QByteArrayView bytes, const std::function<bool()> &isGivenUp)
{
    ByteSums sums;
    QCryptographicHash sha256(QCryptographicHash::Sha256);
    for (; !bytes.isEmpty(); bytes = bytes.sliced(std::min(bytes.size(), pieceSize))) {
        if (isGivenUp())
            return {};
        const QByteArrayView piece = bytes.first(std::min(bytes.size(), pieceSize));
        const auto *const data = reinterpret_cast<const uchar *>(piece.data());
        sums.sum = std::accumulate(data, data + piece.size(), sums.sum);
        sums.crc32 = static_cast<quint32>(::crc32(sums.crc32, data, static_cast<uInt>(piece.size())));
        sha256.addData(piece);
    }
    sums.sha256 = sha256.result();
    return sums;
}
