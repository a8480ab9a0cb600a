#include "support/Waiting.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

bool waitUntil(const std::function<bool()> &condition)
{
    const QDeadlineTimer patience(60s);
    QTimer glance;
    glance.start(50ms);
    do {
        // Deletes what was left to deleteLater outside of any event loop.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (condition())
            return true;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    } while (!patience.hasExpired());
    return false;
}
