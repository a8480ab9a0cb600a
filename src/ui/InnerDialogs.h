#pragma once

#include <QObject>

/// Keeps Qt's own file and folder dialogs inside the window that opens them, as before Qt 6.8. Since then
/// each is a separate window: without a window manager, no window has the focus after it closes; in 6.8 it is
/// not modal; and destroying its parent while it is open crashes the program.
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
