#include "core/RowModel.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int rowRole = Qt::UserRole + 1;

} // namespace

int RowModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant RowModel::data(const QModelIndex &index, int role) const
{
    return role == rowRole ? m_rows.value(index.row()) : QVariant();
}

QHash<int, QByteArray> RowModel::roleNames() const
{
    return {{rowRole, "row"_ba}};
}

void RowModel::setRows(const QVariantList &rows)
{
    // What one feature announces often changes nothing of the list.
    if (rows.isSharedWith(m_rows))
        return;
    if (m_resetting || rows.size() != m_rows.size()) {
        if (rows != m_rows)
            reset(rows);
        return;
    }
    for (int i = 0; i < rowCount(); ++i) {
        if (m_rows.at(i) == rows.at(i))
            continue;
        m_rows[i] = rows.at(i);
        emit dataChanged(index(i), index(i), {rowRole});
    }
    emit rowsChanged();
}

void RowModel::reset(const QVariantList &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
    emit rowsChanged();
}
