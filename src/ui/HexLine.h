#pragma once

#include "app/HexEditing.h"
#include "core/HexModel.h"

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQuickItem>

/// Text in one column of a row of the hex editor: printable ASCII in a font of a fixed pitch. The HexCanvas
/// around the row draws it.
class HexColumn : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(QString text MEMBER text NOTIFY changed FINAL)
    Q_PROPERTY(QColor color MEMBER color NOTIFY changed FINAL)
    Q_PROPERTY(QFont font MEMBER font NOTIFY changed FINAL)

public:
    using QQuickItem::QQuickItem;

    QString text;
    QColor color;
    QFont font;

signals:
    void changed();
};

/// A row of the hex editor: its texts, which follow every change of the bytes, and the background that the
/// HexCanvas around it draws. The texts are made here: made in QML, they would start the garbage collector
/// every few pages.
class HexLine : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(HexModel *hexModel READ hexModel WRITE setHexModel NOTIFY sourceChanged FINAL)
    Q_PROPERTY(HexEditing *editing READ editing WRITE setEditing NOTIFY sourceChanged FINAL)
    /// Beyond the last row the texts are empty.
    Q_PROPERTY(int row READ row WRITE setRow NOTIFY rowChanged FINAL)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY colorChanged FINAL)
    /// As the model's roles give them.
    Q_PROPERTY(QString offset READ offset NOTIFY textsChanged FINAL)
    Q_PROPERTY(QString digits READ digits NOTIFY textsChanged FINAL)
    Q_PROPERTY(QString characters READ characters NOTIFY textsChanged FINAL)
    /// Of the other file; empty while none is compared.
    Q_PROPERTY(QString otherDigits READ otherDigits NOTIFY textsChanged FINAL)
    Q_PROPERTY(QString otherCharacters READ otherCharacters NOTIFY textsChanged FINAL)
    /// All of it for a screen reader, with how many bytes are changed, differ and have a bookmark.
    Q_PROPERTY(QString spoken READ spoken NOTIFY textsChanged FINAL)

public:
    using QQuickItem::QQuickItem;

    HexModel *hexModel() const { return m_hexModel; }
    /// Not owned.
    void setHexModel(HexModel *hexModel);
    HexEditing *editing() const { return m_editing; }
    /// Not owned.
    void setEditing(HexEditing *editing);
    int row() const { return m_row; }
    void setRow(int row);
    QColor color() const { return m_color; }

    QString offset() const { return m_texts.offset; }
    QString digits() const { return m_texts.digits; }
    QString characters() const { return m_texts.characters; }
    QString otherDigits() const { return m_texts.otherDigits; }
    QString otherCharacters() const { return m_texts.otherCharacters; }
    QString spoken() const;

signals:
    void sourceChanged();
    void rowChanged();
    void colorChanged();
    void textsChanged();

private:
    struct Texts
    {
        QString offset;
        QString digits;
        QString characters;
        QString otherDigits;
        QString otherCharacters;
        int changed = 0;
        int different = 0;
        int bookmarked = 0;

        bool operator==(const Texts &) const = default;
    };

    void read();

    QPointer<HexModel> m_hexModel;
    QPointer<HexEditing> m_editing;
    int m_row = 0;
    QColor m_color;
    Texts m_texts;
};
