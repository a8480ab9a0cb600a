#pragma once

#include <QAbstractListModel>
#include <QString>

#include <vector>

/// A text of any length as a list of lines, so that a view lays out only the visible ones. Very long lines
/// are cut into several rows.
class TextLines : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)

public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    /// One role, "line": the line without its end.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    QString text() const { return m_text; }
    void setText(const QString &text);

signals:
    void textChanged();

private:
    struct Piece
    {
        qsizetype start;
        qsizetype length;
    };

    QString m_text;
    std::vector<Piece> m_pieces;
};
