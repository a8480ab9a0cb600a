#include "ui/SecondClicks.h"

#include <QEvent>
#include <QQuickItem>
#include <QQuickWindow>

bool SecondClicks::eventFilter(QObject *watched, QEvent *event)
{
    const bool released = event->type() == QEvent::MouseButtonRelease;
    // Comes after the second press, which has found what it is on.
    const bool again = event->type() == QEvent::MouseButtonDblClick;
    const auto *const window = released || again ? qobject_cast<QQuickWindow *>(watched) : nullptr;
    if (!window)
        return false;
    QQuickItem *const pressed = window->mouseGrabberItem();
    if (released)
        m_clicked = pressed;
    if (released || pressed == m_clicked)
        return false;
    if (pressed)
        pressed->ungrabMouse();
    return true;
}
