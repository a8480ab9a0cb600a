#include "StoredZip.h"

#include <QDataStream>
#include <QIODevice>

#include <zlib.h>

namespace {

constexpr quint16 versionNeeded = 10;
constexpr quint16 none = 0;
/// 1 January 1980, the earliest that the format can say.
constexpr quint16 noDate = 0x0021;

/// What an entry's own header and its line in the directory have in common.
void describe(QDataStream &out, const ZipEntry &entry)
{
    const auto size = quint32(entry.bytes.size());
    const auto checksum = quint32(crc32(0, reinterpret_cast<const Bytef *>(entry.bytes.constData()), size));
    const quint16 flags = none, stored = none, time = none, extra = none;
    out << versionNeeded << flags << stored << time << noDate << checksum << size << size
        << quint16(entry.name.size()) << extra;
}

} // namespace

QByteArray storedZip(const QList<ZipEntry> &entries)
{
    QByteArray result;
    QByteArray directory;
    QDataStream out(&result, QIODevice::WriteOnly);
    QDataStream lines(&directory, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    lines.setByteOrder(QDataStream::LittleEndian);
    for (const ZipEntry &entry : entries) {
        const quint16 comment = none, disk = none, internal = none;
        const quint32 external = 0;
        lines << quint32(0x02014b50) << versionNeeded;
        describe(lines, entry);
        lines << comment << disk << internal << external << quint32(result.size());
        lines.writeRawData(entry.name.constData(), int(entry.name.size()));
        out << quint32(0x04034b50);
        describe(out, entry);
        out.writeRawData(entry.name.constData(), int(entry.name.size()));
        out.writeRawData(entry.bytes.constData(), int(entry.bytes.size()));
    }
    const auto count = quint16(entries.size());
    const auto offset = quint32(result.size());
    const quint16 disk = none, comment = none;
    out.writeRawData(directory.constData(), int(directory.size()));
    out << quint32(0x06054b50) << disk << disk << count << count << quint32(directory.size()) << offset
        << comment;
    return result;
}
