#pragma once

#include "app/AppState.h"

#include <QFile>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <unistd.h>

// What the benchmarks that run inside the real program share.

/// Ends the program after a message on the standard error stream.
[[noreturn]] inline void giveUp(const char *why)
{
    std::fprintf(stderr, "%s\n", why);
    std::exit(EXIT_FAILURE);
}

/// Calls back once the program's window is shown.
inline void whenShown(const std::function<void(QQuickWindow *)> &then)
{
    for (QWindow *const candidate : QGuiApplication::topLevelWindows()) {
        auto *const window = qobject_cast<QQuickWindow *>(candidate);
        if (window && window->isExposed())
            return then(window);
    }
    QTimer::singleShot(10, QCoreApplication::instance(), [then] { whenShown(then); });
}

/// Calls back once the window is shown and nothing of the start is left to be done.
inline void whenStarted(const std::function<void(QQuickWindow *)> &then)
{
    whenShown([then](QQuickWindow *window) {
        if (window->property("complete").toBool())
            return then(window);
        QTimer::singleShot(10, window, [then] { whenStarted(then); });
    });
}

inline AppState *controllerOf(const QQuickWindow *window)
{
    QQmlContext *const context = QQmlEngine::contextForObject(window)->engine()->rootContext();
    return context->contextProperty(QStringLiteral("app")).value<AppState *>();
}

/// The item of that name below `parent`, or none.
inline QQuickItem *findItem(const QQuickItem *parent, const QString &name)
{
    for (QQuickItem *const child : parent->childItems()) {
        if (child->objectName() == name)
            return child;
        if (QQuickItem *const found = findItem(child, name))
            return found;
    }
    return nullptr;
}

/// Calls back when the window was drawn as it is now.
inline void afterNextFrame(QQuickWindow *window, const std::function<void()> &then)
{
    QObject::connect(window, &QQuickWindow::frameSwapped, window, then,
                     static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    window->update();
}

inline double residentMiB()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE))
        / 1048576;
}

/// The processor time of all threads of the program so far.
inline double computedMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}
