#include "core/FileTools.h"

#include "core/ErrorText.h"
#include "core/SystemPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>
#include <QtGui/QDesktopServices>

#include <limits>
#include <system_error>

#ifndef KVTEDITOR_PORTABLE_FILES
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// False, with the system's words for it.
bool fail(QString *error, const std::error_code &problem)
{
    setError(error, QString::fromLocal8Bit(problem.message().c_str()));
    return false;
}

bool fail(QString *error, std::errc problem)
{
    return fail(error, std::make_error_code(problem));
}

void makeFolderOf(const QString &path)
{
    QDir(QString()).mkpath(QFileInfo(path).absolutePath());
}

bool writeWhole(QFile &file, const QByteArray &data, QString *error)
{
    if (file.write(data) == data.size())
        return true;
    setError(error, u"Short write."_s);
    return false;
}

const QString unreadable = u"Could not read file."_s;
constexpr qint64 largestFile = std::numeric_limits<int>::max();
// Unbuffered, so that a count of bytes is what reached the disk and not what reached a buffer.
constexpr QIODevice::OpenMode writing = QIODevice::WriteOnly | QIODevice::Unbuffered;

bool opened(QFile &file, bool isOpen, QString *error)
{
    if (!isOpen)
        setError(error, file.errorString());
    return isOpen;
}

#ifdef KVTEDITOR_PORTABLE_FILES

bool openForWriting(QFile &file, QString *error)
{
    return opened(file, file.open(writing), error);
}

bool openOwn(QFile &file, QIODevice::OpenMode mode, QString *error)
{
    const QFileInfo found(file);
    if (found.isSymLink())
        return fail(error, std::errc::too_many_symbolic_link_levels);
    if (found.exists() && !found.isFile())
        return fail(error, found.isDir() ? std::errc::is_a_directory : std::errc::operation_not_supported);
    return opened(file, file.open(mode), error)
        && opened(file, file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner), error);
}

bool isOwn(const QString &path, QString *error)
{
    const QFileInfo found(path);
    if (found.isSymLink())
        return fail(error, std::errc::too_many_symbolic_link_levels);
    return found.isFile() || fail(error, std::errc::no_such_file_or_directory);
}

QByteArray readRegular(const QString &path, QString *error)
{
    QFile file(path);
    if (!opened(file, file.open(QIODevice::ReadOnly | QIODevice::Unbuffered), error))
        return {};
    QByteArray bytes;
    // A read that fails after some bytes looks like EOF; read again to detect errors.
    bool isTooLarge = file.size() > largestFile;
    for (QByteArray more("-"); !more.isEmpty() && !isTooLarge; isTooLarge = bytes.size() > largestFile) {
        more = file.readAll();
        bytes += more;
    }
    if (isTooLarge)
        fail(error, std::errc::file_too_large);
    return !isTooLarge && opened(file, file.error() == QFileDevice::NoError, error) ? bytes : QByteArray();
}

#else

using Status = struct stat;

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

// Why a file is not taken, by what it is; none where it is.

std::error_code refuseIrregular(const Status &status)
{
    if (S_ISREG(status.st_mode))
        return {};
    return make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                   : std::errc::operation_not_supported);
}

std::error_code refusePipe(const Status &status)
{
    return S_ISFIFO(status.st_mode) ? make_error_code(std::errc::operation_not_supported) : std::error_code();
}

// Somebody else may have given one of the user's own files a second name there.
std::error_code refuseForeign(const Status &status)
{
    if (S_ISLNK(status.st_mode))
        return make_error_code(std::errc::too_many_symbolic_link_levels);
    if (status.st_uid != ::geteuid())
        return make_error_code(std::errc::operation_not_permitted);
    const std::error_code problem = refuseIrregular(status);
    if (!problem && status.st_nlink > 1)
        return make_error_code(std::errc::too_many_links);
    return problem;
}

// A descriptor, or -1. Never waits, whatever has taken the file's place since it was looked at: it is looked
// at again once it is open.
int openUnless(std::error_code (*objection)(const Status &), const QString &path, int flags, QString *error,
               mode_t rights = 0666)
{
    const QByteArray name = QFile::encodeName(path);
    flags |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    int file = ::open(name.constData(), flags, rights);
    while (file < 0 && errno == EINTR)
        file = ::open(name.constData(), flags, rights);
    Status status;
    std::error_code problem = file < 0 || ::fstat(file, &status) != 0 ? lastError() : objection(status);
    if (!problem)
        return file;
    fail(error, problem);
    if (file >= 0)
        ::close(file);
    return -1;
}

bool take(QFile &file, int descriptor, QIODevice::OpenMode mode, QString *error)
{
    if (descriptor < 0)
        return false;
    if (file.open(descriptor, mode, QFileDevice::AutoCloseHandle))
        return true;
    ::close(descriptor);
    return opened(file, false, error);
}

bool openForWriting(QFile &file, QString *error)
{
    const int found = openUnless(refusePipe, file.fileName(), O_WRONLY | O_CREAT | O_TRUNC, error);
    return take(file, found, writing, error);
}

// Changes the file only after its owner is checked. Files left by earlier versions may be readable by others.
bool openOwn(QFile &file, QIODevice::OpenMode mode, QString *error)
{
    constexpr mode_t ownOnly = S_IRUSR | S_IWUSR;
    const bool appends = mode.testFlag(QIODevice::Append);
    const int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | (appends ? O_APPEND : 0);
    const int found = openUnless(refuseForeign, file.fileName(), flags, error, ownOnly);
    if (found >= 0 && ::fchmod(found, ownOnly) != 0) {
        fail(error, lastError());
        ::close(found);
        return false;
    }
    return take(file, found, mode, error) && (appends || opened(file, file.resize(0), error));
}

bool isOwn(const QString &path, QString *error)
{
    Status status;
    const bool isThere = ::lstat(QFile::encodeName(path).constData(), &status) == 0;
    const std::error_code problem = isThere ? refuseForeign(status) : lastError();
    return !problem || fail(error, problem);
}

constexpr qint64 largeFile = 4 * 1024 * 1024;

// How much could be read at once of a part of an open file; less than asked for at its end and on an error.
qint64 readPart(int file, char *to, qint64 size, qint64 from)
{
    qint64 done = 0;
    while (done < size) {
        const ssize_t count = pread(file, to + done, static_cast<size_t>(size - done), from + done);
        if (count <= 0)
            break;
        done += count;
    }
    return done;
}

// Copying from the system's cache keeps one processor busy, so two share it: 256 MiB take some 90 ms in place
// of 130.
qint64 readHalves(int file, char *to, qint64 size)
{
    const qint64 half = size / 2;
    auto second = std::async(readPart, file, to + half, size - half, half);
    const qint64 count = readPart(file, to, half, 0);
    const qint64 secondCount = second.get();
    return count == half ? count + secondCount : count;
}

// All of an open file, or nothing and the system's words for why not.
QByteArray readWhole(int file, QString *error)
{
    // Some of the system's own files do not tell their size.
    const qint64 size = std::max<qint64>(0, ::lseek(file, 0, SEEK_END));
    bool isTooLarge = size > largestFile;
    QByteArray bytes(isTooLarge ? 0 : size, Qt::Uninitialized);
    bytes.truncate(size < largeFile ? readPart(file, bytes.data(), bytes.size(), 0)
                                    : readHalves(file, bytes.data(), bytes.size()));
    // A read that fails after some bytes looks like EOF; read again to detect errors. Somebody may also keep
    // appending to the file.
    QByteArray more(64 * 1024, Qt::Uninitialized);
    ssize_t count = 1;
    while (count != 0 && !isTooLarge) {
        count = ::pread(file, more.data(), static_cast<size_t>(more.size()), bytes.size());
        if (count < 0 && errno != EINTR) {
            // Half a tune must never pass for a whole one.
            fail(error, lastError());
            return {};
        }
        bytes.append(more.constData(), std::max<ssize_t>(0, count));
        isTooLarge = bytes.size() > largestFile;
    }
    if (isTooLarge) {
        fail(error, std::errc::file_too_large);
        return {};
    }
    return bytes;
}

QByteArray readRegular(const QString &path, QString *error)
{
    const int file = openUnless(refuseIrregular, path, O_RDONLY, error);
    if (file < 0)
        return {};
    const QByteArray bytes = readWhole(file, error);
    ::close(file);
    return bytes;
}

#endif

/// Empty, and `error` says why, when the temporary folder is gone.
QString temporaryPath(const QString &name, QString *error)
{
    const QString folder = QDir::tempPath();
    if (!folder.isEmpty())
        return folder + '/'_L1 + name;
    // Qt only returns an empty path, which would lead to the root. The system says why.
    FileTools::readFile(qEnvironmentVariable("TMPDIR", u"/tmp"_s) + '/'_L1 + name, error);
    if (error->isEmpty())
        *error = unreadable;
    return {};
}

/// Empty when `data` lies there although it could not be written. Part of it, or somebody's file of that
/// name, must not pass for it.
QString whyNotThere(const QString &path, const QByteArray &data, const QString &writeError)
{
    QString error;
    const QByteArray found = FileTools::readFile(path, &error);
    if (found.isEmpty())
        return error.isEmpty() ? unreadable : error;
    return found == data ? QString() : writeError;
}

} // namespace

QByteArray FileTools::readFile(const QString &path, QString *error)
{
    // Asked before the open, too: opening a device may already do something.
    std::error_code problem;
    const std::filesystem::file_status status = std::filesystem::status(systemPath(path), problem);
    if (!problem && !is_regular_file(status)) {
        problem = make_error_code(is_directory(status) ? std::errc::is_a_directory
                                                       : std::errc::operation_not_supported);
    }
    if (problem) {
        fail(error, problem);
        return {};
    }

    return readRegular(path, error);
}

bool FileTools::writeFile(const QString &path, const QByteArray &data, QString *error)
{
    makeFolderOf(path);
    // The open would not wait for a pipe's reader either, but has other words for it.
    std::error_code problem;
    if (is_fifo(std::filesystem::status(systemPath(path), problem)))
        return fail(error, std::errc::operation_not_supported);
    QFile file(path);
    return openForWriting(file, error) && writeWhole(file, data, error);
}

bool FileTools::openPrivateFile(QFile &file, QIODevice::OpenMode mode, QString *error)
{
    return openOwn(file, mode | QIODevice::WriteOnly, error);
}

QString FileTools::documentsDir()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString FileTools::exportToDocuments(const QByteArray &data, const QString &fileName, QString *error)
{
    const QString path = documentsDir() + '/'_L1 + fileName;
    return writeFile(path, data, error) ? path : QString();
}

QString FileTools::exportToTemporary(const QByteArray &data, const QString &fileName, QString *error)
{
    QString problem;
    const QString path = temporaryPath(fileName, &problem);
    if (!path.isEmpty()) {
        makeFolderOf(path);
        QFile file(path);
        const bool isWritten = openOwn(file, writing, &problem) && writeWhole(file, data, &problem);
        file.close();
        // Does not read a file that was refused.
        if (!isWritten && isOwn(path, nullptr))
            problem = whyNotThere(path, data, problem);
    }
    if (problem.isEmpty() && isOwn(path, &problem))
        return path;
    setError(error, problem);
    return {};
}

void FileTools::revealInExplorer(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
