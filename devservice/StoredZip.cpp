#include "StoredZip.h"

#include <QtEndian>

#include <zlib.h>

namespace {

constexpr quint16 versionNeeded = 10;
/// 1 January 1980, the earliest that the format can say.
constexpr quint16 noDate = 0x0021;

template <typename Number> QByteArray little(Number number)
{
    QByteArray bytes(qsizetype(sizeof number), Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// What an entry's own header and its line in the directory have in common.
QByteArray description(const ZipEntry &entry)
{
    const auto size = quint32(entry.bytes.size());
    const auto *data = reinterpret_cast<const Bytef *>(entry.bytes.constData());
    const auto checksum = quint32(crc32(0, data, size));
    const quint16 flags = 0;
    const quint16 stored = 0;
    const quint16 time = 0;
    const quint16 extra = 0;
    return little(versionNeeded) + little(flags) + little(stored) + little(time) + little(noDate)
        + little(checksum) + little(size) + little(size) + little(quint16(entry.name.size())) + little(extra);
}

QByteArray directoryLine(const ZipEntry &entry, quint32 offset)
{
    const quint16 comment = 0;
    const quint16 disk = 0;
    const quint16 internal = 0;
    const quint32 external = 0;
    return "PK\x01\x02" + little(versionNeeded) + description(entry) + little(comment) + little(disk)
        + little(internal) + little(external) + little(offset) + entry.name;
}

QByteArray directoryEnd(quint16 count, quint32 size, quint32 offset)
{
    const quint16 disk = 0;
    const quint16 comment = 0;
    return "PK\x05\x06" + little(disk) + little(disk) + little(count) + little(count) + little(size)
        + little(offset) + little(comment);
}

} // namespace

QByteArray storedZip(const QList<ZipEntry> &entries)
{
    QByteArray result;
    QByteArray directory;
    for (const ZipEntry &entry : entries) {
        directory += directoryLine(entry, quint32(result.size()));
        result += "PK\x03\x04" + description(entry) + entry.name + entry.bytes;
    }
    const QByteArray end =
        directoryEnd(quint16(entries.size()), quint32(directory.size()), quint32(result.size()));
    return result + directory + end;
}
