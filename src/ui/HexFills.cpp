#include "ui/HexFills.h"

#include "core/HexModel.h"

#include <QQuickWindow>
#include <QSGRectangleNode>
#include <QSGTransformNode>

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

} // namespace

HexFills::HexFills(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &HexFills::changed, this, &QQuickItem::update);
    connect(this, &QQuickItem::heightChanged, this, &QQuickItem::update);
}

void HexFills::setEditing(HexEditing *editing)
{
    if (editing == m_editing)
        return;
    if (m_editing)
        disconnect(m_editing, nullptr, this, nullptr);
    m_editing = editing;
    if (m_editing)
        connect(m_editing, &HexEditing::marksChanged, this, &QQuickItem::update);
    emit changed();
}

QSGNode *HexFills::updatePaintNode(QSGNode *root, UpdatePaintNodeData *)
{
    // The software renderer needs a parent with a transform to place nodes that are added later.
    if (!root)
        root = new QSGTransformNode;
    QSGNode *unused = root->firstChild();
    const auto paint = [&](const QRectF &place, const QColor &color) {
        auto *node = static_cast<QSGRectangleNode *>(unused);
        if (node) {
            unused = node->nextSibling();
        } else {
            node = window()->createRectangleNode();
            root->appendChildNode(node);
        }
        node->setRect(place);
        node->setColor(color);
    };

    const int firstRow = static_cast<int>(m_topRow);
    const int rows = m_editing && m_rowHeight > 0 ? static_cast<int>(height()) / m_rowHeight + 2 : 0;
    const QList<HexRowMarks> marks = rows > 0 ? m_editing->marks(firstRow, rows) : QList<HexRowMarks>();
    double y = std::round((firstRow - m_topRow) * m_rowHeight);
    for (const HexRowMarks &row : marks) {
        const auto fill = [&](quint16 mask, const QColor &color, double digitsX, double charactersX) {
            forEachRun(mask, [&](int first, int end) {
                const double width = (end - first) * m_pitch;
                paint({digitsX + (3 * first - 0.5) * m_pitch, y, 3 * width, double(m_rowHeight)}, color);
                paint({charactersX + first * m_pitch, y, width, double(m_rowHeight)}, color);
            });
        };
        fill(row.different, m_differentColor, m_digitsX, m_charactersX);
        if (m_otherDigitsX >= 0)
            fill(row.different, m_differentColor, m_otherDigitsX, m_otherCharactersX);
        fill(row.found, m_foundColor, m_digitsX, m_charactersX);
        fill(row.selected, m_selectedColor, m_digitsX, m_charactersX);
        forEachRun(row.changed, [&](int first, int end) {
            const double bottom = y + m_rowHeight - 2;
            paint({m_digitsX + 3 * first * m_pitch, bottom, (3 * (end - first) - 1) * m_pitch, 2},
                  m_changedColor);
            paint({m_charactersX + first * m_pitch, bottom, (end - first) * m_pitch, 2}, m_changedColor);
        });
        y += m_rowHeight;
    }
    while (unused) {
        QSGNode *const next = unused->nextSibling();
        root->removeChildNode(unused);
        delete unused;
        unused = next;
    }
    return root;
}
