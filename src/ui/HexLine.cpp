#include "ui/HexLine.h"

#include <bit>

using namespace Qt::StringLiterals;

void HexLine::setHexModel(HexModel *hexModel)
{
    if (hexModel == m_hexModel)
        return;
    if (m_hexModel)
        disconnect(m_hexModel, nullptr, this, nullptr);
    m_hexModel = hexModel;
    if (m_hexModel)
        connect(m_hexModel, &HexModel::dataChangedSig, this, &HexLine::read);
    emit sourceChanged();
    read();
}

void HexLine::setEditing(HexEditing *editing)
{
    if (editing == m_editing)
        return;
    if (m_editing) {
        disconnect(m_editing, nullptr, this, nullptr);
        disconnect(m_editing->compare(), nullptr, this, nullptr);
    }
    m_editing = editing;
    if (m_editing) {
        connect(m_editing, &HexEditing::changesChanged, this, &HexLine::read);
        connect(m_editing, &HexEditing::bookmarksChanged, this, &HexLine::read);
        connect(m_editing->compare(), &HexCompare::otherChanged, this, &HexLine::read);
        connect(m_editing->compare(), &HexCompare::changed, this, &HexLine::read);
    }
    emit sourceChanged();
    read();
}

void HexLine::setRow(int row)
{
    if (row == m_row)
        return;
    m_row = row;
    emit rowChanged();
    read();
}

void HexLine::read()
{
    Texts texts;
    if (m_hexModel && m_row < m_hexModel->rowCount()) {
        const QModelIndex index = m_hexModel->index(m_row);
        texts.offset = m_hexModel->data(index, HexModel::OffsetRole).toString();
        texts.digits = m_hexModel->data(index, HexModel::HexRole).toString();
        texts.characters = m_hexModel->data(index, HexModel::AsciiRole).toString();
    }
    if (m_editing && m_row >= 0) {
        texts.otherDigits = m_editing->compare()->digits(m_row);
        texts.otherCharacters = m_editing->compare()->characters(m_row);
        const HexRowMarks marks = m_editing->marks(m_row, 1).constFirst();
        texts.changed = std::popcount(marks.changed);
        texts.different = std::popcount(marks.different);
        texts.bookmarked = std::popcount(marks.bookmarked);
    }
    if (texts == m_texts)
        return;
    m_texts = texts;
    emit textsChanged();
}

QString HexLine::spoken() const
{
    QString text = u"Offset %1, bytes %2, text %3"_s.arg(m_texts.offset, m_texts.digits, m_texts.characters);
    if (!m_texts.otherDigits.isEmpty())
        text += u", other file "_s + m_texts.otherDigits;
    if (m_texts.changed > 0)
        text += u", %1 changed"_s.arg(m_texts.changed);
    if (m_texts.different > 0)
        text += u", %1 different"_s.arg(m_texts.different);
    if (m_texts.bookmarked > 0)
        text += u", %1 bookmarked"_s.arg(m_texts.bookmarked);
    return text;
}
