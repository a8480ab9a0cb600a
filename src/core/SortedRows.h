#pragma once

#include "core/RowModel.h"

#include <QCollator>
#include <QSortFilterProxyModel>

/// A list of maps in the order of one of their members, for a view whose user sorts it. Numbers in texts
/// count as such, upper and lower case are alike, and equal members keep the order of the list.
class SortedRows : public QSortFilterProxyModel
{
    Q_OBJECT
    /// As a RowModel's; any other list resets the model.
    Q_PROPERTY(QVariantList rows READ rows WRITE setRows NOTIFY rowsChanged FINAL)
    /// The member to sort by; the list's own order while it is empty.
    Q_PROPERTY(QString key READ key WRITE setKey NOTIFY keyChanged FINAL)
    Q_PROPERTY(bool descending READ isDescending WRITE setDescending NOTIFY descendingChanged FINAL)

public:
    explicit SortedRows(QObject *parent = nullptr);

    QVariantList rows() const { return m_rows.rows(); }
    void setRows(const QVariantList &rows) { m_rows.setRows(rows); }
    QString key() const { return m_key; }
    void setKey(const QString &key);
    bool isDescending() const { return m_isDescending; }
    void setDescending(bool descending);

    /// Where in the list the map of a row stands; -1 outside.
    Q_INVOKABLE int listIndex(int row) const;

signals:
    void rowsChanged();
    void keyChanged();
    void descendingChanged();

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    void order();

    RowModel m_rows;
    QString m_key;
    bool m_isDescending = false;
    QCollator m_collator;
};
