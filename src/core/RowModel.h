#pragma once

#include <QAbstractListModel>
#include <QVariantList>

/// A list of maps as a list view's model. Setting a list of the same length changes only the rows that
/// differ, so that a view keeps its position, rows and focus; any other list resets the model. With
/// `resetting`, every different list does. An equal list changes nothing and emits no signal.
class RowModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(QVariantList rows READ rows WRITE setRows NOTIFY rowsChanged FINAL)
    Q_PROPERTY(bool resetting MEMBER m_resetting FINAL)

public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    /// One role, "row": the map.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    QVariantList rows() const { return m_rows; }
    void setRows(const QVariantList &rows);

signals:
    void rowsChanged();

private:
    void reset(const QVariantList &rows);

    QVariantList m_rows;
    bool m_resetting = false;
};
