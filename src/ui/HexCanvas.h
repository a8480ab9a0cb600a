#pragma once

#include "app/HexEditing.h"
#include "ui/HexLine.h"

#include <QColor>
#include <QPointer>
#include <QQuickPaintedItem>

class QRawFont;

/// Draws the hex editor's rows, which are its HexLine children: fills the cells of selected, found and
/// differing bytes, underlines changed ones, flags bookmarks, and places each glyph by its index. A Text for
/// each column and an item for each mark took up to 19 ms a page, more than a frame.
class HexCanvas : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(HexEditing *editing READ editing WRITE setEditing NOTIFY changed FINAL)
    /// The row at the top; its fraction is the part that is scrolled away.
    Q_PROPERTY(double topRow MEMBER m_topRow NOTIFY changed FINAL)
    Q_PROPERTY(int rowHeight MEMBER m_rowHeight NOTIFY changed FINAL)
    /// Where the columns begin, three characters of `pitch` pixels a byte in the first, one in the second.
    Q_PROPERTY(double digitsX MEMBER m_digitsX NOTIFY changed FINAL)
    Q_PROPERTY(double charactersX MEMBER m_charactersX NOTIFY changed FINAL)
    /// The other file's columns; below 0 while there is none.
    Q_PROPERTY(double otherDigitsX MEMBER m_otherDigitsX NOTIFY changed FINAL)
    Q_PROPERTY(double otherCharactersX MEMBER m_otherCharactersX NOTIFY changed FINAL)
    Q_PROPERTY(double pitch MEMBER m_pitch NOTIFY changed FINAL)
    Q_PROPERTY(QColor selectedColor MEMBER m_selectedColor NOTIFY changed FINAL)
    Q_PROPERTY(QColor foundColor MEMBER m_foundColor NOTIFY changed FINAL)
    Q_PROPERTY(QColor changedColor MEMBER m_changedColor NOTIFY changed FINAL)
    Q_PROPERTY(QColor differentColor MEMBER m_differentColor NOTIFY changed FINAL)
    Q_PROPERTY(QColor bookmarkColor MEMBER m_bookmarkColor NOTIFY changed FINAL)

public:
    explicit HexCanvas(QQuickItem *parent = nullptr);

    HexEditing *editing() const { return m_editing; }
    /// Not owned.
    void setEditing(HexEditing *editing);

    void paint(QPainter *painter) override;

signals:
    void changed();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;
    /// Repaints the rows whose marks have changed, once for all that a key has changed.
    void updatePolish() override;

private:
    void updateAll();
    void paintMarks(QPainter *painter) const;
    void paintText(QPainter *painter, const HexColumn &column, const QRawFont &glyphs) const;
    double rowY(qsizetype index) const;

    QPointer<HexEditing> m_editing;
    /// Of the rows in sight, from the top.
    QList<HexRowMarks> m_marks;
    double m_topRow = 0;
    int m_rowHeight = 20;
    double m_digitsX = 0;
    double m_charactersX = 0;
    double m_otherDigitsX = -1;
    double m_otherCharactersX = -1;
    double m_pitch = 0;
    QColor m_selectedColor;
    QColor m_foundColor;
    QColor m_changedColor;
    QColor m_differentColor;
    QColor m_bookmarkColor;
};
