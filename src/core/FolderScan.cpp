#include "core/FileTools.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

// Walks with the system's own calls: Qt's iterator asks for the kind, and often the size, of each file, which
// costs more than all the rest for the many files that no filter lets through. It is what other systems than
// Unix get.
#ifdef KVTEDITOR_PORTABLE_FILES
#include <QDirIterator>
#else
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <vector>
#endif

using namespace Qt::StringLiterals;

namespace {

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

QString decoded(std::string_view name)
{
    const auto length = static_cast<qsizetype>(name.size());
#ifdef KVTEDITOR_PORTABLE_FILES
    return QString::fromUtf8(name.data(), length);
#else
    return isAscii(name) ? QString::fromLatin1(name.data(), length)
                         : QFile::decodeName(QByteArray(name.data(), length));
#endif
}

char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

/// Looks for a text in names, with or without regard to case. Names in ASCII, which nearly all are, are
/// searched as they lie; only others are decoded.
class TextFilter
{
public:
    TextFilter(const QString &text, Qt::CaseSensitivity sensitivity)
        : m_text(sensitivity == Qt::CaseInsensitive ? text.toLower() : text)
        , m_bytes(m_text.toStdString())
        , m_foldCase(sensitivity == Qt::CaseInsensitive)
    {
    }

    bool isEmpty() const { return m_text.isEmpty(); }

    bool isIn(std::string_view name) const
    {
        if (!isAscii(name)) {
            const QString text = decoded(name);
            return (m_foldCase ? text.toLower() : text).contains(m_text);
        }
        const auto matches = [this](char ours, char theirs) {
            return (m_foldCase ? asciiLower(ours) : ours) == theirs;
        };
        return std::search(name.begin(), name.end(), m_bytes.begin(), m_bytes.end(), matches) != name.end();
    }

private:
    QString m_text;
    std::string m_bytes;
    bool m_foldCase;
};

bool hasTuneSuffix(std::string_view name)
{
    constexpr std::string_view suffixes[] = {".kvt", ".ctz"};
    return std::any_of(std::begin(suffixes), std::end(suffixes), [name](std::string_view suffix) {
        return name.size() >= suffix.size()
            && std::equal(suffix.begin(), suffix.end(),
                          name.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                          [](char wanted, char c) { return asciiLower(c) == wanted; });
    });
}

#ifndef KVTEDITOR_PORTABLE_FILES

// Skips invalid UTF-8: QString cannot open it.
bool isText(std::string_view name)
{
    return isAscii(name) || QFile::encodeName(decoded(name)).toStdString() == name;
}

enum class Kind
{
    Folder,
    File,
    Other
};

struct Entry
{
    std::string name;
    Kind kind;
};

Kind kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return Kind::Folder;
    return S_ISREG(mode) ? Kind::File : Kind::Other;
}

Kind kindOf(const dirent &entry, const std::string &folder)
{
    switch (entry.d_type) {
    case DT_DIR:
        return Kind::Folder;
    case DT_REG:
        return Kind::File;
    case DT_UNKNOWN: {
        struct stat status;
        return lstat((folder + entry.d_name).c_str(), &status) == 0 ? kindOf(status.st_mode) : Kind::Other;
    }
    default:
        return Kind::Other;
    }
}

#endif

class Scan
{
public:
    Scan(bool recursive, const QString &name, const QString &os, const QString &make, const QString &year,
         int limit, const std::atomic<bool> *cancel)
        : m_recursive(recursive)
        , m_name(name, Qt::CaseInsensitive)
        , m_os(os, Qt::CaseInsensitive)
        , m_make(make, Qt::CaseInsensitive)
        , m_year(year, Qt::CaseSensitive)
        , m_limit(limit)
        , m_cancel(cancel)
    {
    }

    QVariantList run(const QString &root)
    {
        walk(root);
        return std::move(m_hits);
    }

private:
    bool isOver() const { return isCancelled() || (m_limit > 0 && m_hits.size() >= m_limit); }

    bool isCancelled() const { return m_cancel && *m_cancel; }

#ifdef KVTEDITOR_PORTABLE_FILES

    void walk(const QString &root)
    {
        QDirIterator files(root, QDir::Files | QDir::NoSymLinks,
                           m_recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
        while (!isOver() && files.hasNext()) {
            const QFileInfo file = files.nextFileInfo();
            const std::string path = file.filePath().toStdString();
            const std::string name = file.fileName().toStdString();
            // Half a character has no bytes of its own.
            if (mayPass(name) && decoded(path) == file.filePath())
                take(path, name, [&file] { return file.size(); });
        }
    }

#else

    using Stream = std::unique_ptr<DIR, decltype([](DIR *stream) { closedir(stream); })>;

    struct Level
    {
        std::string folder;
        Stream stream;
        std::vector<Entry> entries;
        size_t next = 0;
    };

    void walk(const QString &rootPath)
    {
        const std::string root = QFile::encodeName(rootPath).toStdString();
        m_pathsAreFinal = QFile::encodeName(QFileInfo(rootPath).absoluteFilePath()).toStdString() == root;
        // Folders that are begun, innermost last. A list of names each, so that a tree of any depth needs one
        // open folder at a time: the innermost, until it is left for a subfolder.
        std::vector<Level> levels;
        levels.push_back(read(root.ends_with('/') ? root : root + '/'));
        while (!levels.empty() && !isOver()) {
            Level &level = levels.back();
            if (level.next == level.entries.size()) {
                levels.pop_back();
                continue;
            }
            const Entry &entry = level.entries[level.next++];
            if (entry.kind == Kind::File) {
                take(level.folder + entry.name, entry.name,
                     [&level, &entry] { return sizeOf(level, entry.name); });
            } else {
                level.stream.reset();
                levels.push_back(read(level.folder + entry.name + '/'));
            }
        }
    }

    // The tune files, and the folders to descend into, in the order in which the system has them. Hidden ones
    // and links are left out. A folder that cannot be read is an empty one.
    Level read(const std::string &folder) const
    {
        Level level{folder, Stream(opendir(folder.c_str())), {}};
        if (!level.stream)
            return level;
        while (const dirent *const entry = readdir(level.stream.get())) {
            if (isCancelled())
                break;
            if (entry->d_name[0] == '.')
                continue;
            const Kind kind = kindOf(*entry, folder);
            const bool isWanted =
                kind == Kind::Folder ? m_recursive : kind == Kind::File && mayPass(entry->d_name);
            if (isWanted && isText(entry->d_name))
                level.entries.push_back({entry->d_name, kind});
        }
        return level;
    }

    // The system need not walk the whole path again while the folder is open.
    static qint64 sizeOf(const Level &level, const std::string &name)
    {
        struct stat status;
        const int failed = level.stream
            ? fstatat(dirfd(level.stream.get()), name.c_str(), &status, AT_SYMLINK_NOFOLLOW)
            : lstat((level.folder + name).c_str(), &status);
        return failed ? 0 : status.st_size;
    }

#endif

    bool mayPass(std::string_view name) const
    {
        return hasTuneSuffix(name) && (m_name.isEmpty() || m_name.isIn(name));
    }

    void take(const std::string &path, const std::string &name, const auto &size)
    {
        if ((!m_make.isEmpty() && !m_make.isIn(path)) || (!m_year.isEmpty() && !m_year.isIn(path)))
            return;
        const QString fileName = decoded(name);
        const QString token = FileTools::osTokenFromName(fileName);
        if (!m_os.isEmpty() && !m_os.isIn(token.toStdString()) && !m_os.isIn(name))
            return;
        m_hits.append(hit(path, fileName, token, size()));
    }

    QVariantMap hit(const std::string &path, const QString &name, const QString &os, qint64 size) const
    {
        const QString text = decoded(path);
        const QString absolute = m_pathsAreFinal ? text : QFileInfo(text).absoluteFilePath();
        // In the order of the keys, so that each goes in at the end without a search.
        std::map<QString, QVariant> map;
        const auto add = [&map](const QString &key, const QString &value) {
            map.emplace_hint(map.end(), key, value);
        };
        add(u"make"_s, QString());
        add(u"name"_s, name);
        add(u"os"_s, os);
        add(u"path"_s, absolute);
        add(u"size"_s, QString::number(size));
        add(u"year"_s, FileTools::yearFromName(name));
        return QVariantMap(std::move(map));
    }

    const bool m_recursive;
    const TextFilter m_name;
    const TextFilter m_os;
    const TextFilter m_make;
    const TextFilter m_year;
    const int m_limit;
    const std::atomic<bool> *const m_cancel;
    QVariantList m_hits;
    // Whether the paths, which begin with the root as it was given, are absolute and tidy as they are.
    bool m_pathsAreFinal = false;
};

} // namespace

QVariantList FileTools::scanCalFolder(const QString &root, bool recursive, const QString &nameFilter,
                                      const QString &osFilter, const QString &makeFilter,
                                      const QString &yearFilter, int limit, const std::atomic<bool> *cancel)
{
    if (!QFileInfo(root).isDir())
        return {};
    Scan scan(recursive, nameFilter, osFilter, makeFilter, yearFilter, limit, cancel);
    return scan.run(root);
}
