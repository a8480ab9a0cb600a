#include "core/FileTools.h"

#include "core/ErrorText.h"
#include "core/SystemPath.h"

#include <QDir>
#include <QFileInfo>

#include <system_error>

namespace {

QStringList sortKeys(const QString &order)
{
    QStringList keys;
    for (const QString &piece : order.split(QLatin1Char(','))) {
        const QString key = piece.trimmed();
        if (!key.isEmpty())
            keys.append(key);
    }
    if (keys.isEmpty())
        keys = {QStringLiteral("Year"), QStringLiteral("Make"), QStringLiteral("OS")};
    return keys;
}

QString firstNonEmpty(const QString &text, const QString &fallback)
{
    return text.isEmpty() ? fallback : text;
}

QString folderName(const QString &fileName, const QVariantMap &meta, const QString &key)
{
    const auto text = [&meta](const QString &name) { return meta.value(name).toString(); };
    if (key == QLatin1String("os")) {
        const QString os =
            firstNonEmpty(text(QStringLiteral("mainOS")), FileTools::osTokenFromName(fileName));
        return firstNonEmpty(os, QStringLiteral("UnknownOS"));
    }
    if (key == QLatin1String("year")) {
        const QString year = text(QStringLiteral("created")).left(4);
        return year.size() == 4
            ? year
            : firstNonEmpty(FileTools::yearFromName(fileName), QStringLiteral("UnknownYear"));
    }
    if (key == QLatin1String("make"))
        return firstNonEmpty(text(QStringLiteral("system")), QStringLiteral("UnknownMake"));
    return firstNonEmpty(text(key), QStringLiteral("Unknown"));
}

bool isMissing(const std::filesystem::path &path)
{
    std::error_code problem;
    return std::filesystem::status(path, problem).type() == std::filesystem::file_type::not_found;
}

// A file that lies where it belongs could only be lost by writing it onto itself, and where it cannot be told
// whether it does, nothing is written.
bool writeCopy(const QString &file, const QString &copy, const QByteArray &bytes)
{
    const std::filesystem::path from = systemPath(file);
    const std::filesystem::path to = systemPath(copy);
    if (!isMissing(to) && !isMissing(from)) {
        std::error_code problem;
        const bool isSameFile = std::filesystem::equivalent(from, to, problem);
        if (isSameFile || problem)
            return isSameFile;
    }
    return FileTools::writeFile(copy, bytes);
}

// Reads one source and writes its copy below the destination; false when either failed.
bool sortOne(const QString &file, const QString &destination, const QStringList &keys)
{
    const QByteArray bytes = FileTools::readFile(file);
    if (bytes.isEmpty())
        return false;
    const QString fileName = QFileInfo(file).fileName();
    const QVariantMap meta{{QStringLiteral("mainOS"), FileTools::osTokenFromName(fileName)}};
    // Joined by hand: QDir takes a name that begins with a colon for a resource's full path.
    QString copy = destination.isEmpty() ? QStringLiteral(".") : destination;
    for (const QString &folder : FileTools::folderParts(fileName, meta, keys))
        copy += QLatin1Char('/') + folder;
    copy += QLatin1Char('/') + fileName;
    // Writing makes the folder with all that is missing above it.
    return writeCopy(file, copy, bytes);
}

} // namespace

QStringList FileTools::folderParts(const QString &fileName, const QVariantMap &meta, const QStringList &keys)
{
    QStringList parts;
    for (const QString &key : keys)
        parts.append(sanitizeName(folderName(fileName, meta, key.trimmed().toLower())));
    return parts;
}

int FileTools::sortCopyKvt(const QStringList &files, const QString &destination, const QString &order,
                           QString *error)
{
    if (!QDir(destination).exists() && !QDir().mkpath(destination)) {
        setError(error, QStringLiteral("Destination folder is missing."));
        return 0;
    }
    const QStringList keys = sortKeys(order);
    int copied = 0;
    for (const QString &file : files)
        copied += sortOne(file, destination, keys) ? 1 : 0;
    return copied;
}
