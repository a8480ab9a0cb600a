#include "core/FolderRows.h"

#include <QDir>
#include <QDirIterator>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Entries = QList<FolderRows::Entry>;

std::optional<Entries> entriesOf(const QString &path, const QStringList &patterns, QDir::Filters filters,
                                 const Job<Entries>::GivenUp &givenUp)
{
    Entries entries;
    QDirIterator next(path, patterns, filters);
    while (next.hasNext()) {
        if (givenUp())
            return {};
        next.next();
        const QFileInfo info = next.fileInfo();
        entries.append({info.fileName(), info.isDir() ? 0 : info.size(), info.lastModified(), info.isDir()});
    }
    return entries;
}

} // namespace

FolderRows::FolderRows(QObject *parent)
    : QAbstractListModel(parent)
    // In the C locale a collator ignores numeric mode and case.
    , m_collator(QLocale(QLocale::English))
    , m_job([this](std::optional<Entries> &&entries) {
        show(std::move(entries).value_or(Entries()));
        setReading(false);
        if (m_again)
            read();
    })
{
    m_collator.setNumericMode(true);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    connect(this, &FolderRows::choiceChanged, this, &FolderRows::read);
    connect(this, &FolderRows::orderChanged, this, [this] { show(m_entries); });
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderRows::readAgain);
}

int FolderRows::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant FolderRows::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Entry &entry = m_entries.at(index.row());
    const QHash<int, QVariant> values{
        {Name, entry.name}, {Size, entry.size}, {Modified, entry.modified}, {IsFolder, entry.isFolder}};
    return values.value(role);
}

QHash<int, QByteArray> FolderRows::roleNames() const
{
    return {{Name, "name"_ba}, {Size, "size"_ba}, {Modified, "modified"_ba}, {IsFolder, "isFolder"_ba}};
}

void FolderRows::setPath(const QString &path)
{
    const QString clean = pathOf(path);
    if (std::exchange(m_path, clean) == clean)
        return;
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    // Names that come while it is read are not missed.
    m_watcher.addPath(clean);
    show({});
    setReading(true);
    read();
    emit pathChanged();
}

QString FolderRows::pathOf(const QString &path) const
{
    QString clean = QDir::cleanPath(QDir::isAbsolutePath(path) ? path : m_path + '/'_L1 + path);
    // Nothing is above the root.
    while (clean.startsWith("/../"_L1) || clean == "/.."_L1)
        clean.remove(0, 3);
    return clean.isEmpty() ? u"/"_s : clean;
}

void FolderRows::read()
{
    m_again = false;
    if (m_path.isEmpty())
        return;
    QDir::Filters filters = QDir::AllDirs | QDir::NoDotAndDotDot;
    if (!m_foldersOnly)
        filters |= QDir::Files;
    m_job.start([path = m_path, patterns = m_patterns, filters](const Job<Entries>::GivenUp &givenUp) {
        return entriesOf(path, patterns, filters, givenUp);
    });
}

// Starting over at each change might never end in a folder that is being filled.
void FolderRows::readAgain()
{
    if (m_job.isRunning())
        m_again = true;
    else
        read();
}

bool FolderRows::isBefore(const Entry &left, const Entry &right) const
{
    if (left.isFolder != right.isFolder)
        return left.isFolder;
    const Entry &first = m_descending ? right : left;
    const Entry &second = m_descending ? left : right;
    if (m_key == "size"_L1 && first.size != second.size)
        return first.size < second.size;
    if (m_key == "modified"_L1 && first.modified != second.modified)
        return first.modified < second.modified;
    const int names = m_collator.compare(first.name, second.name);
    return names != 0 ? names < 0 : first.name < second.name;
}

void FolderRows::show(QList<Entry> entries)
{
    std::ranges::sort(entries,
                      [this](const Entry &left, const Entry &right) { return isBefore(left, right); });
    if (entries == m_entries)
        return;
    beginResetModel();
    m_entries = std::move(entries);
    m_rowsByName.clear();
    for (const Entry &entry : std::as_const(m_entries))
        m_rowsByName.insert(entry.name, static_cast<int>(m_rowsByName.size()));
    endResetModel();
}

void FolderRows::setReading(bool reading)
{
    if (std::exchange(m_reading, reading) != reading)
        emit readingChanged();
}
