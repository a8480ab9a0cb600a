#include "core/FileTools.h"

#include "core/ErrorText.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <cerrno>
#include <limits>

namespace {

QByteArray refused(QString *error, int systemError)
{
    setError(error, qt_error_string(systemError));
    return {};
}

} // namespace

QByteArray FileTools::readFile(const QString &path, QString *error)
{
    // Asked before the open: opening a pipe that nobody writes to would never return.
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return refused(error, info.isDir() ? EISDIR : EOPNOTSUPP);
    if (info.size() > std::numeric_limits<int>::max())
        return refused(error, EFBIG);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        setError(error, file.errorString());
        return {};
    }
    const QByteArray bytes = file.readAll();
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
