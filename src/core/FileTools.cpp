#include "core/FileTools.h"

#include "core/ErrorText.h"
#include "core/SystemPath.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <limits>
#include <system_error>

#ifndef KVTEDITOR_PORTABLE_FILES
#include <algorithm>
#include <cstdint>
#include <future>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

QByteArray refused(QString *error, const std::error_code &problem)
{
    setError(error, QString::fromLocal8Bit(problem.message().c_str()));
    return {};
}

QByteArray refused(QString *error, std::errc problem)
{
    return refused(error, std::make_error_code(problem));
}

#ifdef KVTEDITOR_PORTABLE_FILES

QByteArray readAtOnce(QFile &file)
{
    return file.readAll();
}

#else

constexpr qint64 largeFile = 4 * 1024 * 1024;
// Small enough to be still in the processor's cache when it is filled.
constexpr qint64 pieceSize = 1024 * 1024;

// Has the system hand out memory for a whole piece at a time: page by page, as the read touches it, costs as
// much again as the copying. It may refuse; the read then does it.
void handOut(char *begin, qint64 size)
{
#ifdef MADV_POPULATE_WRITE
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = (reinterpret_cast<std::uintptr_t>(begin) + page - 1) / page * page;
    const auto end =
        (reinterpret_cast<std::uintptr_t>(begin) + static_cast<std::uintptr_t>(size)) / page * page;
    if (start < end)
        madvise(reinterpret_cast<void *>(start), end - start, MADV_POPULATE_WRITE);
#else
    Q_UNUSED(begin)
    Q_UNUSED(size)
#endif
}

// How much could be read at once of a part of an open file; less than asked for at its end and on an error.
qint64 readPart(int file, char *to, qint64 size, qint64 from)
{
    qint64 done = 0;
    while (done < size) {
        const qint64 piece = std::min(size - done, pieceSize);
        handOut(to + done, piece);
        const ssize_t count = pread(file, to + done, static_cast<size_t>(piece), from + done);
        if (count <= 0)
            break;
        done += count;
    }
    return done;
}

// Where a file lies in the system's cache, copying it and handing out the memory for it keeps one processor
// busy, so two share that. What is missing is left to the next read, and so is telling why.
QByteArray readAtOnce(QFile &file)
{
    const qint64 size = file.size();
    if (size < largeFile)
        return file.readAll();
    QByteArray bytes(size, Qt::Uninitialized);
    const qint64 half = size / 2;
    char *const begin = bytes.data();
    auto second = std::async(readPart, file.handle(), begin + half, size - half, half);
    qint64 count = readPart(file.handle(), begin, half, 0);
    const qint64 secondCount = second.get();
    if (count == half)
        count += secondCount;
    bytes.truncate(file.seek(count) ? count : 0);
    return bytes;
}

#endif

} // namespace

QByteArray FileTools::readFile(const QString &path, QString *error)
{
    // Asked before the open: opening a pipe that nobody writes to would never return.
    std::error_code problem;
    const std::filesystem::file_status status = std::filesystem::status(systemPath(path), problem);
    if (problem)
        return refused(error, problem);
    if (!is_regular_file(status))
        return refused(error,
                       is_directory(status) ? std::errc::is_a_directory : std::errc::operation_not_supported);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        setError(error, file.errorString());
        return {};
    }
    if (file.size() > std::numeric_limits<int>::max())
        return refused(error, std::errc::file_too_large);
    QByteArray bytes = readAtOnce(file);
    // A read that fails behind some bytes passes for the end of the file; only the next one tells.
    for (QByteArray more = file.readAll(); !more.isEmpty(); more = file.readAll()) {
        bytes += more;
        // Somebody may write on meanwhile, without an end.
        if (bytes.size() > std::numeric_limits<int>::max())
            return refused(error, std::errc::file_too_large);
    }
    if (file.error() != QFileDevice::NoError) {
        // Half a tune must never pass for a whole one.
        setError(error, file.errorString());
        return {};
    }
    return bytes;
}

bool FileTools::writeFile(const QString &path, const QByteArray &data, QString *error)
{
    const QString folder = QFileInfo(path).absolutePath();
    QDir(QString()).mkpath(folder);

    // Opening a pipe that nobody reads from would never return.
    std::error_code problem;
    if (is_fifo(std::filesystem::status(systemPath(path), problem))) {
        refused(error, std::errc::operation_not_supported);
        return false;
    }

    // Unbuffered, so that the count below is what reached the disk and not what reached a buffer.
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        setError(error, file.errorString());
        return false;
    }
    if (file.write(data) != data.size()) {
        setError(error, QStringLiteral("Short write."));
        return false;
    }
    return true;
}

QString FileTools::documentsDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString FileTools::exportToDocuments(const QByteArray &data, const QString &fileName, QString *error)
{
    const QString path = documentsDir() + QLatin1Char('/') + fileName;
    return writeFile(path, data, error) ? path : QString();
}

void FileTools::revealInExplorer(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
