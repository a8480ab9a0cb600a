#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

/// What the bytes at one place mean, and the bytes that mean something. Re-entrant.
class ByteValues
{
public:
    ByteValues() = delete;

    /// One way to read the bytes.
    struct Row
    {
        QString name;
        /// Empty where the value would reach past the end.
        QString littleEndian;
        /// Empty, too, where there is only one order.
        QString bigEndian;
        /// Read from one byte.
        bool single = false;

        bool operator==(const Row &) const = default;
    };

    /// Always the same rows. `offset` is in bytes from the start, and may lie outside.
    static QList<Row> at(QByteArrayView bytes, qsizetype offset);
    /// The bytes that the row at that index of `at` reads as `text`: a number, in decimal or as an integer
    /// after "0x", up to eight binary digits, or a printable ASCII character. Nothing if the text is no such
    /// thing or out of range.
    static std::optional<QByteArray> bytesOf(int row, const QString &text, bool bigEndian);
};

/// What a range of bytes adds up to.
struct ByteSums
{
    /// Modulo 2^32; its low bits are the sums modulo 2^8 and 2^16.
    quint32 sum = 0;
    quint32 crc32 = 0;
    /// The digest itself, 32 bytes.
    QByteArray sha256;

    /// How many bytes are taken at a time; a fraction of a millisecond's work.
    static constexpr qsizetype pieceSize = 64 * 1024;

    /// Takes linear time, some seconds for a file of 1 GiB. `isGivenUp` is asked before each piece; once it
    /// says so, there is no result. Re-entrant.
    static std::optional<ByteSums> of(QByteArrayView bytes, const std::function<bool()> &isGivenUp);

    bool operator==(const ByteSums &) const = default;
};
