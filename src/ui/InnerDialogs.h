#pragma once

#include <QObject>

/// Keeps Qt's file and folder dialogs, which it draws where there is no screen, inside the window that opens
/// them, as before Qt 6.8. Since then each is a separate window: no window has the focus after it closes, and
/// destroying its parent while it is open crashes the program.
class InnerDialogs : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *window READ window WRITE setWindow NOTIFY windowChanged FINAL)

public:
    using QObject::QObject;

    QObject *window() const { return m_window; }
    /// The window that opens the dialogs. Call once, before one of them opens.
    void setWindow(QObject *window);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void windowChanged();

private slots:
    void putSenderInside();

private:
    static void putInside(QObject *popup);

    QObject *m_window = nullptr;
};
