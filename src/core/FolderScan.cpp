#include "core/FileTools.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

// Walks with the system's own calls: the framework's iterator asks for the kind, and often the size, of each
// file, which costs more than all the rest for the many files that no filter lets through.

namespace {

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

QString decoded(std::string_view name)
{
    const auto length = static_cast<qsizetype>(name.size());
    return isAscii(name) ? QString::fromLatin1(name.data(), length)
                         : QFile::decodeName(QByteArray(name.data(), length));
}

// Every text holds a file's name in UTF-8, so a name that is none could be listed but never opened.
bool isText(std::string_view name)
{
    return isAscii(name) || QFile::encodeName(decoded(name)).toStdString() == name;
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

bool hasTuneEnding(std::string_view name)
{
    constexpr std::string_view endings[] = {".kvt", ".ctz"};
    return std::any_of(std::begin(endings), std::end(endings), [name](std::string_view ending) {
        return name.size() >= ending.size()
            && std::equal(ending.begin(), ending.end(),
                          name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                          [](char wanted, char c) { return asciiLower(c) == wanted; });
    });
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

    QVariantList run(const std::string &root)
    {
        const QString absoluteRoot = QFileInfo(QFile::decodeName(root.c_str())).absoluteFilePath();
        m_pathsAreFinal = QFile::encodeName(absoluteRoot).toStdString() == root;
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
                take(level, entry.name);
            } else {
                level.stream.reset();
                levels.push_back(read(level.folder + entry.name + '/'));
            }
        }
        return std::move(m_hits);
    }

private:
    using Stream = std::unique_ptr<DIR, decltype([](DIR *stream) { closedir(stream); })>;

    struct Level
    {
        std::string folder;
        Stream stream;
        std::vector<Entry> entries;
        size_t next = 0;
    };

    bool isOver() const { return isCancelled() || (m_limit > 0 && m_hits.size() >= m_limit); }

    bool isCancelled() const { return m_cancel && *m_cancel; }

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

    bool mayPass(std::string_view name) const
    {
        return hasTuneEnding(name) && (m_name.isEmpty() || m_name.isIn(name));
    }

    void take(const Level &level, const std::string &name)
    {
        const std::string path = level.folder + name;
        if ((!m_make.isEmpty() && !m_make.isIn(path)) || (!m_year.isEmpty() && !m_year.isIn(path)))
            return;
        const QString fileName = decoded(name);
        const QString token = FileTools::osTokenFromName(fileName);
        if (!m_os.isEmpty() && !m_os.isIn(token.toStdString()) && !m_os.isIn(name))
            return;
        m_hits.append(hit(path, fileName, token, sizeOf(level, name)));
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

    QVariantMap hit(const std::string &path, const QString &name, const QString &os, qint64 size) const
    {
        const QString text = decoded(path);
        const QString absolute = m_pathsAreFinal ? text : QFileInfo(text).absoluteFilePath();
        // In the order of the keys, so that each goes in at the end without a search.
        std::map<QString, QVariant> map;
        const auto add = [&map](const QString &key, const QString &value) {
            map.emplace_hint(map.end(), key, value);
        };
        add(QStringLiteral("make"), QString());
        add(QStringLiteral("name"), name);
        add(QStringLiteral("os"), os);
        add(QStringLiteral("path"), absolute);
        add(QStringLiteral("size"), QString::number(size));
        add(QStringLiteral("year"), FileTools::yearFromName(name));
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
    return scan.run(QFile::encodeName(root).toStdString());
}
