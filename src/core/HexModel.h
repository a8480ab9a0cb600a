#pragma once

#include <QAbstractListModel>
#include <QByteArray>

#include <algorithm>
#include <cstdlib>

/// The bytes of a tune file as rows of sixteen, with a cursor, a selection and the last match of a search.
/// Bytes are overwritten, never inserted or removed. Row texts are made on demand; an empty buffer still
/// shows one empty row.
class HexModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int cursor READ cursor WRITE setCursor NOTIFY cursorChanged FINAL)
    Q_PROPERTY(int byteCount READ byteCount NOTIFY dataChangedSig FINAL)
    Q_PROPERTY(int currentRow READ currentRow NOTIFY cursorChanged FINAL)
    Q_PROPERTY(int matchStart READ matchStart NOTIFY matchChanged FINAL)
    Q_PROPERTY(int matchLength READ matchLength NOTIFY matchChanged FINAL)
    Q_PROPERTY(int selectionStart READ selectionStart NOTIFY selectionChanged FINAL)
    Q_PROPERTY(int selectionLength READ selectionLength NOTIFY selectionChanged FINAL)

public:
    enum Role
    {
        OffsetRole = Qt::UserRole + 1,
        HexRole,
        AsciiRole
    };
    Q_ENUM(Role)

    /// What a key does with the cursor.
    enum Move
    {
        Left,
        Right,
        Up,
        Down,
        PageUp,
        PageDown,
        RowStart,
        RowEnd,
        FileStart,
        FileEnd
    };
    Q_ENUM(Move)

    static constexpr int bytesPerRow = 16;

    explicit HexModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    QByteArray bytes() const { return m_bytes; }
    int byteCount() const { return static_cast<int>(m_bytes.size()); }
    /// Offset in bytes from the start; always within 0 and the last byte, 0 for an empty buffer.
    int cursor() const { return m_cursor; }
    int currentRow() const;
    /// Offset in bytes of what was last found; -1, with a length of 0, when there is no match to show.
    int matchStart() const { return m_match.start; }
    int matchLength() const { return m_match.length; }
    /// The selected bytes reach from where the selection began to the cursor, both included. -1, with a
    /// length of 0, when nothing is selected.
    int selectionStart() const { return m_anchor < 0 ? -1 : std::min(m_anchor, m_cursor); }
    int selectionLength() const { return m_anchor < 0 ? 0 : std::abs(m_anchor - m_cursor) + 1; }

    /// Replaces the buffer and forgets match and selection; the cursor stays, clamped to the new last byte.
    void setBytes(const QByteArray &bytes);
    /// Replaces the buffer by an equal one; cursor, selection and match stay. Given a copy that nobody
    /// shares, the next write need not make one.
    void replaceByEqual(QByteArray &&bytes);
    /// Positions outside the buffer are clamped. Nothing is selected afterwards.
    void setCursor(int pos);
    /// Moves the cursor to `pos`, clamped, and selects from the old position to the new one, both included;
    /// an existing selection keeps its anchor.
    Q_INVOKABLE void selectTo(int pos);
    /// Selects `length` bytes and moves the cursor to the first. False, with nothing changed, when they are
    /// not wholly within the buffer or there are none.
    Q_INVOKABLE bool select(int start, int length);
    /// Moves the cursor to the first byte of `row`, clamped.
    Q_INVOKABLE void clickRow(int row);
    /// Moves the cursor by bytes and rows; a page has `rowsPerPage` of them. A move that keeps the column
    /// stops at the last byte of a short row, and one past either end does not change the row. With
    /// `selects` the bytes on the way are selected.
    Q_INVOKABLE void moveCursor(HexModel::Move move, int rowsPerPage, bool selects = false);
    /// Overwrites bytes at `offset`. Refused, with nothing changed, when `bytes` is empty or would not fit.
    /// A match that it overwrites, if only in part, is forgotten.
    bool applyPatch(int offset, const QByteArray &bytes);
    /// A range that is not wholly within the buffer is not a match.
    void setMatch(int start, int length);
    void clearMatch();

signals:
    void cursorChanged();
    void dataChangedSig();
    void matchChanged();
    void selectionChanged();
    /// The buffer is about to be written to or replaced: whoever reads it on another thread stops now.
    void aboutToChange();
    /// What a patch that changed something found in its place.
    void overwritten(int offset, const QByteArray &before);

private:
    struct Match
    {
        int start = -1;
        int length = 0;

        bool operator==(const Match &) const = default;
    };

    int clamped(qint64 pos) const;
    void place(int cursor, int anchor);
    void changeMatch(Match match);

    QByteArray m_bytes;
    int m_cursor = 0;
    /// Where the selection began; -1 when nothing is selected.
    int m_anchor = -1;
    Match m_match;
};
