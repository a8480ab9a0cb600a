#pragma once

#include <QObject>

/// Keeps Qt's own file and folder dialogs inside the window that opens them, as they are before Qt 6.8. Since
/// then each is a window of its own, which is worse: where nothing manages windows, closing it leaves the
/// keyboard with none; that of 6.8 does not keep the user from the window below; and a window that is
/// destroyed while it is open takes the program along.
class InnerDialogs : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *window READ window WRITE setWindow NOTIFY windowChanged FINAL)

public:
    using QObject::QObject;

    QObject *window() const { return m_window; }
    /// The window whose dialogs these are; once, before one of them opens.
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
