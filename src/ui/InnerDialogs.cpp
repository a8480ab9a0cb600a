#include "ui/InnerDialogs.h"

#include <QChildEvent>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

// Tells the versions apart: it came with the windows.
constexpr const char *placeProperty = "popupType";

} // namespace

void InnerDialogs::setWindow(QObject *window)
{
    if (window == m_window)
        return;
    m_window = window;
    m_window->installEventFilter(this);
    emit windowChanged();
}

bool InnerDialogs::eventFilter(QObject *watched, QEvent *event)
{
    // A dialog becomes a child of its window just before it opens for the first time.
    if (event->type() == QEvent::ChildAdded) {
        QObject *const child = static_cast<QChildEvent *>(event)->child();
        if (child->property(placeProperty).isValid()) {
            putInside(child);
            // Some versions want a window again at each opening.
            connect(child, SIGNAL(popupTypeChanged()), this, SLOT(putSenderInside()));
        }
    }
    return QObject::eventFilter(watched, event);
}

void InnerDialogs::putInside(QObject *popup)
{
    popup->setProperty(placeProperty, u"Item"_s);
}

void InnerDialogs::putSenderInside()
{
    putInside(sender());
}
