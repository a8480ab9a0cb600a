#pragma once

#include <QByteArray>
#include <QList>

struct ZipEntry
{
    /// ASCII, without folders.
    QByteArray name;
    QByteArray bytes;
};

/// A ZIP archive of the entries, stored without compression and without dates. Pure.
QByteArray storedZip(const QList<ZipEntry> &entries);
