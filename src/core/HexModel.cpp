#include "core/HexModel.h"

#include "core/HexText.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

HexModel::HexModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

int HexModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    if (m_bytes.isEmpty())
        return 1;
    return static_cast<int>((m_bytes.size() + bytesPerRow - 1) / bytesPerRow);
}

QVariant HexModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const qint64 offset = qint64(index.row()) * bytesPerRow;
    const qint64 length = std::min<qint64>(bytesPerRow, m_bytes.size() - offset);
    const QByteArrayView row = QByteArrayView(m_bytes).sliced(offset, length);
    switch (role) {
    case OffsetRole:
        return offsetText(offset).rightJustified(8, '0'_L1);
    case HexRole:
        return hexText(row);
    case AsciiRole:
        return asciiText(row);
    default:
        return {};
    }
}

QHash<int, QByteArray> HexModel::roleNames() const
{
    return {{OffsetRole, "offset"}, {HexRole, "hex"}, {AsciiRole, "ascii"}};
}

int HexModel::currentRow() const
{
    return m_cursor / bytesPerRow;
}

void HexModel::setBytes(const QByteArray &bytes)
{
    emit aboutToChange();
    beginResetModel();
    m_bytes = bytes;
    m_cursor = clamped(m_cursor);
    const bool hadMatch = std::exchange(m_match, {}).length > 0;
    const bool hadSelection = std::exchange(m_anchor, -1) >= 0;
    endResetModel();
    emit dataChangedSig();
    emit cursorChanged();
    if (hadMatch)
        emit matchChanged();
    if (hadSelection)
        emit selectionChanged();
}

void HexModel::replaceByEqual(QByteArray &&bytes)
{
    emit aboutToChange();
    m_bytes = std::move(bytes);
    // For those who stopped to read it.
    emit dataChangedSig();
}

void HexModel::setCursor(int pos)
{
    place(clamped(pos), -1);
}

void HexModel::selectTo(int pos)
{
    if (!m_bytes.isEmpty())
        place(clamped(pos), m_anchor < 0 ? m_cursor : m_anchor);
}

bool HexModel::select(int start, int length)
{
    if (start < 0 || length <= 0 || length > m_bytes.size() - start)
        return false;
    place(start, start + length - 1);
    return true;
}

void HexModel::clickRow(int row)
{
    setCursor(clamped(qint64(row) * bytesPerRow));
}

void HexModel::moveCursor(Move move, int rowsPerPage, bool selects)
{
    const auto moveTo = [&](qint64 position) {
        if (selects)
            selectTo(clamped(position));
        else
            setCursor(clamped(position));
    };
    const qint64 lastRow = rowCount() - 1;
    const qint64 rowStart = qint64(currentRow()) * bytesPerRow;
    const auto byRows = [&](qint64 rows) {
        const qint64 row = std::clamp<qint64>(currentRow() + rows, 0, lastRow);
        moveTo(row * bytesPerRow + m_cursor - rowStart);
    };
    switch (move) {
    case Left:
        return moveTo(qint64(m_cursor) - 1);
    case Right:
        return moveTo(qint64(m_cursor) + 1);
    case Up:
        return byRows(-1);
    case Down:
        return byRows(1);
    case PageUp:
        return byRows(-qint64(rowsPerPage));
    case PageDown:
        return byRows(rowsPerPage);
    case RowStart:
        return moveTo(rowStart);
    case RowEnd:
        return moveTo(rowStart + bytesPerRow - 1);
    case FileStart:
        return moveTo(0);
    case FileEnd:
        return moveTo(m_bytes.size());
    }
}

bool HexModel::applyPatch(int offset, const QByteArray &bytes)
{
    if (offset < 0 || bytes.isEmpty() || offset + bytes.size() > m_bytes.size())
        return false;
    const QByteArray before = m_bytes.sliced(offset, bytes.size());
    emit aboutToChange();
    m_bytes.replace(offset, bytes.size(), bytes);
    const auto rowAt = [this](qsizetype position) { return index(static_cast<int>(position / bytesPerRow)); };
    emit dataChanged(rowAt(offset), rowAt(offset + bytes.size() - 1), {HexRole, AsciiRole});
    emit dataChangedSig();
    if (offset < m_match.start + m_match.length && m_match.start < offset + bytes.size())
        clearMatch();
    if (before != bytes)
        emit overwritten(offset, before);
    return true;
}

void HexModel::setMatch(int start, int length)
{
    const bool inside = start >= 0 && length > 0 && length <= m_bytes.size() - start;
    changeMatch(inside ? Match{start, length} : Match{});
}

void HexModel::clearMatch()
{
    changeMatch({});
}

int HexModel::clamped(qint64 pos) const
{
    return static_cast<int>(std::clamp<qint64>(pos, 0, std::max<qint64>(m_bytes.size(), 1) - 1));
}

void HexModel::place(int cursor, int anchor)
{
    const bool moved = std::exchange(m_cursor, cursor) != cursor;
    const bool hadSelection = std::exchange(m_anchor, anchor) >= 0;
    if (moved)
        emit cursorChanged();
    if (hadSelection || anchor >= 0)
        emit selectionChanged();
}

void HexModel::changeMatch(Match match)
{
    if (match == m_match)
        return;
    m_match = match;
    emit matchChanged();
}
