#pragma once

#include "core/Job.h"

#include <QAbstractListModel>
#include <QCollator>
#include <QDateTime>
#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

/// What a folder holds, folders first: read on another thread, and again whenever names in it come or go.
/// Hidden entries are left out, and links count as what they lead to. Used on one thread.
class FolderRows : public QAbstractListModel
{
    Q_OBJECT
    /// From the root, without "." and "..". Setting another folder empties the model until that is read.
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged FINAL)
    /// Wildcards for the names of files, in any case.
    Q_PROPERTY(QStringList patterns MEMBER m_patterns NOTIFY choiceChanged FINAL)
    Q_PROPERTY(bool foldersOnly MEMBER m_foldersOnly NOTIFY choiceChanged FINAL)
    /// The role to sort by: "size", "modified", or else the name.
    Q_PROPERTY(QString key MEMBER m_key NOTIFY orderChanged FINAL)
    Q_PROPERTY(bool descending MEMBER m_descending NOTIFY orderChanged FINAL)
    /// While nothing is known about the folder yet.
    Q_PROPERTY(bool reading READ isReading NOTIFY readingChanged FINAL)

public:
    struct Entry
    {
        QString name;
        qint64 size = 0;
        QDateTime modified;
        bool isFolder = false;

        bool operator==(const Entry &) const = default;
    };

    explicit FolderRows(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// "name", "size" in bytes, "modified", a time, and "isFolder".
    QHash<int, QByteArray> roleNames() const override;

    QString path() const { return m_path; }
    void setPath(const QString &path);
    bool isReading() const { return m_reading; }

    Q_INVOKABLE QString nameAt(int row) const { return m_entries.value(row).name; }
    Q_INVOKABLE bool isFolder(int row) const { return m_entries.value(row).isFolder; }
    /// The row of that name; -1 without one.
    Q_INVOKABLE int rowOf(const QString &name) const { return m_rowsByName.value(name, -1); }
    /// A path from the root, or from the folder, without "." and "..".
    Q_INVOKABLE QString pathOf(const QString &path) const;

signals:
    void pathChanged();
    void choiceChanged();
    void orderChanged();
    void readingChanged();

private:
    enum Role
    {
        Name = Qt::UserRole,
        Size,
        Modified,
        IsFolder
    };

    void read();
    void readAgain();
    void show(QList<Entry> entries);
    void setReading(bool reading);
    bool isBefore(const Entry &left, const Entry &right) const;

    QString m_path;
    QStringList m_patterns;
    bool m_foldersOnly = false;
    QString m_key;
    bool m_descending = false;
    bool m_reading = false;
    /// Whether the folder changed while it was being read.
    bool m_again = false;
    QList<Entry> m_entries;
    QHash<QString, int> m_rowsByName;
    QCollator m_collator;
    QFileSystemWatcher m_watcher;
    Job<QList<Entry>> m_job;
};
