#include "core/TextLines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int lineRole = Qt::UserRole + 1;
constexpr qsizetype longestPiece = 1000;

} // namespace

int TextLines::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_pieces.size());
}

QVariant TextLines::data(const QModelIndex &index, int role) const
{
    if (role != lineRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Piece piece = m_pieces[static_cast<std::size_t>(index.row())];
    return m_text.sliced(piece.start, piece.length);
}

QHash<int, QByteArray> TextLines::roleNames() const
{
    return {{lineRole, "line"_ba}};
}

void TextLines::setText(const QString &text)
{
    if (text == m_text)
        return;
    beginResetModel();
    m_text = text;
    m_pieces.clear();
    qsizetype end = -1;
    for (qsizetype start = 0; start < text.size();) {
        // Once for a line, however many pieces it makes.
        if (end < start) {
            const qsizetype found = text.indexOf('\n'_L1, start);
            end = found < 0 ? text.size() : found;
        }
        qsizetype cut = std::min(end, start + longestPiece);
        // Both halves of a character stay together.
        if (cut < end && text.at(cut - 1).isHighSurrogate() && text.at(cut).isLowSurrogate())
            --cut;
        m_pieces.push_back({start, cut - start});
        start = cut == end ? end + 1 : cut;
    }
    endResetModel();
    emit textChanged();
}
