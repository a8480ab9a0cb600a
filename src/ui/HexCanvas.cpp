#include "ui/HexCanvas.h"

#include "core/HexModel.h"

#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>

#include <cmath>

namespace {

// Calls `use` with the first byte of each run of set bits, and the one after its last.
template <typename Use> void forEachRun(quint16 mask, Use use)
{
    for (int first = 0; first < HexModel::bytesPerRow; ++first) {
        if (!(mask >> first & 1))
            continue;
        int end = first + 1;
        while (end < HexModel::bytesPerRow && (mask >> end & 1))
            ++end;
        use(first, end);
        first = end;
    }
}

template <typename Use> void forEachColumn(const QQuickItem &item, Use use)
{
    const QList<QQuickItem *> children = item.childItems();
    for (const QQuickItem *const child : children) {
        if (!child->isVisible())
            continue;
        if (const auto *const column = qobject_cast<const HexColumn *>(child))
            use(*column);
        else
            forEachColumn(*child, use);
    }
}

} // namespace

HexCanvas::HexCanvas(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    connect(this, &HexCanvas::changed, this, &HexCanvas::updateAll);
    connect(this, &QQuickItem::widthChanged, this, &HexCanvas::updateAll);
    connect(this, &QQuickItem::heightChanged, this, &HexCanvas::updateAll);
}

// Named, because Qt forgets an update of the whole without a rectangle when one of a part follows.
void HexCanvas::updateAll()
{
    update(boundingRect().toAlignedRect());
    polish();
}

void HexCanvas::setEditing(HexEditing *editing)
{
    if (editing == m_editing)
        return;
    if (m_editing)
        disconnect(m_editing, nullptr, this, nullptr);
    m_editing = editing;
    if (m_editing)
        connect(m_editing, &HexEditing::marksChanged, this, &QQuickItem::polish);
    emit changed();
}

void HexCanvas::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickPaintedItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || (change == ItemVisibleHasChanged && data.boolValue))
        updateAll();
    const auto *const line = change == ItemChildAddedChange ? qobject_cast<HexLine *>(data.item) : nullptr;
    if (!line)
        return;
    const auto updateLine = [this, line] { update(QRectF(line->position(), line->size()).toAlignedRect()); };
    connect(line, &HexLine::textsChanged, this, updateLine);
    connect(line, &HexLine::colorChanged, this, updateLine);
}

// Qt paints what is hidden, too: a picture of several megabytes that nobody sees.
QSGNode *HexCanvas::updatePaintNode(QSGNode *node, UpdatePaintNodeData *data)
{
    return isVisible() ? QQuickPaintedItem::updatePaintNode(node, data) : node;
}

double HexCanvas::rowY(qsizetype index) const
{
    return std::round((std::floor(m_topRow) + static_cast<double>(index) - m_topRow) * m_rowHeight);
}

void HexCanvas::updatePolish()
{
    const int rows = m_editing && m_rowHeight > 0 ? static_cast<int>(height()) / m_rowHeight + 2 : 0;
    const QList<HexRowMarks> marks =
        rows > 0 ? m_editing->marks(static_cast<int>(m_topRow), rows) : QList<HexRowMarks>();
    m_marks.resize(rows);
    for (qsizetype i = 0; i < marks.size(); ++i) {
        if (marks[i] != m_marks[i])
            update(QRectF(0, rowY(i), width(), m_rowHeight).toAlignedRect());
    }
    m_marks = marks;
}

void HexCanvas::paint(QPainter *painter)
{
    paintMarks(painter);
    const QRectF dirty = painter->hasClipping() ? painter->clipBoundingRect() : boundingRect();
    // A raw font belongs to the thread that made it; with a GPU that is Qt's own for rendering.
    QFont font;
    QRawFont glyphs;
    const QList<QQuickItem *> items = childItems();
    for (const QQuickItem *const item : items) {
        const auto *const line = qobject_cast<const HexLine *>(item);
        const QRectF place(item->position(), item->size());
        if (!line || !line->isVisible() || !place.intersects(dirty))
            continue;
        painter->fillRect(place, line->color());
        forEachColumn(*line, [&](const HexColumn &column) {
            if (!glyphs.isValid() || column.font != font) {
                font = column.font;
                glyphs = QRawFont::fromFont(font);
            }
            paintText(painter, column, glyphs);
        });
    }
}

void HexCanvas::paintText(QPainter *painter, const HexColumn &column, const QRawFont &glyphs) const
{
    const QPointF start = column.mapToItem(this, QPointF());
    const double baseline =
        start.y() + std::round((column.height() + glyphs.ascent() - glyphs.descent()) / 2);
    const QList<quint32> indexes = glyphs.glyphIndexesForString(column.text);
    QList<QPointF> positions(indexes.size());
    for (qsizetype i = 0; i < positions.size(); ++i)
        positions[i] = {start.x() + static_cast<double>(i) * m_pitch, baseline};
    QGlyphRun run;
    run.setRawFont(glyphs);
    run.setGlyphIndexes(indexes);
    run.setPositions(positions);
    painter->setPen(column.color);
    painter->drawGlyphRun({}, run);
}

void HexCanvas::paintMarks(QPainter *painter) const
{
    for (qsizetype i = 0; i < m_marks.size(); ++i) {
        const HexRowMarks &row = m_marks[i];
        const double y = rowY(i);
        const auto fill = [&](quint16 mask, const QColor &color, double digitsX, double charactersX) {
            forEachRun(mask, [&](int first, int end) {
                const double width = (end - first) * m_pitch;
                painter->fillRect(QRectF(digitsX + (3 * first - 0.5) * m_pitch, y, 3 * width, m_rowHeight),
                                  color);
                painter->fillRect(QRectF(charactersX + first * m_pitch, y, width, m_rowHeight), color);
            });
        };
        fill(row.different, m_differentColor, m_digitsX, m_charactersX);
        if (m_otherDigitsX >= 0)
            fill(row.different, m_differentColor, m_otherDigitsX, m_otherCharactersX);
        fill(row.found, m_foundColor, m_digitsX, m_charactersX);
        fill(row.selected, m_selectedColor, m_digitsX, m_charactersX);
        forEachRun(row.changed, [&](int first, int end) {
            const double bottom = y + m_rowHeight - 2;
            const double digitsWidth = (3 * (end - first) - 1) * m_pitch;
            painter->fillRect(QRectF(m_digitsX + 3 * first * m_pitch, bottom, digitsWidth, 2),
                              m_changedColor);
            painter->fillRect(QRectF(m_charactersX + first * m_pitch, bottom, (end - first) * m_pitch, 2),
                              m_changedColor);
        });
        if (row.bookmarked != 0)
            painter->fillRect(QRectF(2, y + 3, 3, m_rowHeight - 6), m_bookmarkColor);
        forEachRun(row.bookmarked, [&](int first, int end) {
            for (int byte = first; byte < end; ++byte) {
                for (const double x :
                     {m_digitsX + (3 * byte - 0.5) * m_pitch, m_charactersX + byte * m_pitch}) {
                    painter->fillRect(QRectF(x, y, 6, 2), m_bookmarkColor);
                    painter->fillRect(QRectF(x, y, 2, 6), m_bookmarkColor);
                }
            }
        });
    }
}
