#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstring>
#include <random>

/// What is searched in the benchmarks, and needles that are not in it.
namespace Haystack {

inline constexpr qsizetype size = 256 * 1024 * 1024;

inline QByteArray randomBytes(qsizetype count)
{
    QByteArray bytes(count, Qt::Uninitialized);
    std::mt19937_64 generator(4);
    for (qsizetype i = 0; i + 8 <= count; i += 8) {
        const auto word = generator();
        std::memcpy(bytes.data() + i, &word, sizeof word);
    }
    return bytes;
}

/// Noise in which no byte is FF, so that even a needle of two bytes can be absent from it.
inline QByteArray noise()
{
    return randomBytes(size).replace('\xff', '\x7f');
}

inline QByteArray twoValues()
{
    QByteArray bytes = randomBytes(size);
    for (char &byte : bytes)
        byte = static_cast<char>(byte & 1);
    return bytes;
}

inline QByteArray zeros()
{
    return QByteArray(size, '\0');
}

/// All but the last byte of it matches everywhere in zeros: 00 00 00 01.
inline QByteArray absentFromZeros(qsizetype length)
{
    return QByteArray(length - 1, '\0') + '\x01';
}

/// Begins in noise as often as any other bytes do.
inline QByteArray absentFromNoise(qsizetype length)
{
    return randomBytes(128).last(length - 1) + '\xff';
}

/// Each byte of it is as frequent as any other in noise.
inline QByteArray crowdedInNoise(qsizetype length)
{
    QByteArray bytes = randomBytes(1024).last(length).replace('\xff', '\x7f');
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// Of those two values; a short one would be there. Half of all places match its first byte, a quarter the
/// first two.
inline QByteArray crowdedInTwoValues(qsizetype length)
{
    QByteArray bytes = randomBytes(2048).last(length);
    for (char &byte : bytes)
        byte = static_cast<char>(byte >> 1 & 1);
    return bytes;
}

} // namespace Haystack
