#include "core/FileTools.h"

#include "core/ErrorText.h"
#include "core/SystemPath.h"

#include <QDir>
#include <QFileInfo>

#include <system_error>

using namespace Qt::StringLiterals;

namespace {

QStringList sortKeys(const QString &order)
{
    QStringList keys;
    const QStringList pieces = order.split(','_L1);
    for (const QString &piece : pieces) {
        const QString key = piece.trimmed();
        if (!key.isEmpty())
            keys.append(key);
    }
    if (keys.isEmpty())
        keys = {u"Year"_s, u"Make"_s, u"OS"_s};
    return keys;
}

QString firstNonEmpty(const QString &text, const QString &fallback)
{
    return text.isEmpty() ? fallback : text;
}

QString folderName(const QString &fileName, const QVariantMap &meta, const QString &key)
{
    const auto text = [&meta](const QString &name) { return meta.value(name).toString(); };
    if (key == "os"_L1) {
        const QString os = firstNonEmpty(text(u"mainOS"_s), FileTools::osTokenFromName(fileName));
        return firstNonEmpty(os, u"UnknownOS"_s);
    }
    if (key == "year"_L1) {
        const QString year = text(u"created"_s).left(4);
        return year.size() == 4 ? year : firstNonEmpty(FileTools::yearFromName(fileName), u"UnknownYear"_s);
    }
    if (key == "make"_L1)
        return firstNonEmpty(text(u"system"_s), u"UnknownMake"_s);
    return firstNonEmpty(text(key), u"Unknown"_s);
}

bool isMissing(const std::filesystem::path &path)
{
    std::error_code problem;
    return std::filesystem::status(path, problem).type() == std::filesystem::file_type::not_found;
}

// Writing a file onto itself could lose it, so one already in place is left alone. If that cannot be
// determined, nothing is written.
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
    const QVariantMap meta{{u"mainOS"_s, FileTools::osTokenFromName(fileName)}};
    // Joined by hand: QDir takes a name that begins with a colon for a resource's full path.
    QString copy = destination.isEmpty() ? u"."_s : destination;
    const QStringList folders = FileTools::folderParts(fileName, meta, keys);
    for (const QString &folder : folders)
        copy += '/'_L1 + folder;
    copy += '/'_L1 + fileName;
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
        setError(error, u"Destination folder is missing."_s);
        return 0;
    }
    const QStringList keys = sortKeys(order);
    int copied = 0;
    for (const QString &file : files)
        copied += sortOne(file, destination, keys) ? 1 : 0;
    return copied;
}
