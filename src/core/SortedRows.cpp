#include "core/SortedRows.h"

#include <QVariantMap>

#include <utility>

SortedRows::SortedRows(QObject *parent)
    : QSortFilterProxyModel(parent)
    // In the C locale a collator ignores numeric mode and case.
    , m_collator(QLocale(QLocale::English))
{
    m_collator.setNumericMode(true);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    m_rows.setProperty("resetting", true);
    connect(&m_rows, &RowModel::rowsChanged, this, &SortedRows::rowsChanged);
    setSourceModel(&m_rows);
}

void SortedRows::setKey(const QString &key)
{
    if (std::exchange(m_key, key) == key)
        return;
    order();
    emit keyChanged();
}

void SortedRows::setDescending(bool descending)
{
    if (std::exchange(m_isDescending, descending) == descending)
        return;
    order();
    emit descendingChanged();
}

int SortedRows::listIndex(int row) const
{
    return mapToSource(index(row, 0)).row();
}

void SortedRows::order()
{
    invalidate();
    sort(m_key.isEmpty() ? -1 : 0, m_isDescending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

bool SortedRows::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const auto text = [this](const QModelIndex &index) {
        return m_rows.rows().at(index.row()).toMap().value(m_key).toString();
    };
    return m_collator.compare(text(left), text(right)) < 0;
}
