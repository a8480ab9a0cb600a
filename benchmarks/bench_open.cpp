// The real program with a large file: how long until the window is drawn with it, how far the resident memory
// grows, before and after the first patch, and the process's peak once the file was sent to the service.
// Prints one line each.
//   BENCH_FILE=/absolute/path QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software bench_open

#include "api/VoxApiClient.h"
#include "app/AppState.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

namespace {

double residentMiB()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE))
        / 1048576;
}

double peakMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// Waits until the identifiers of the file were asked for and answered.
void afterUpload(const AppState *state, const std::function<void()> &then)
{
    if (state->findChild<VoxApiClient *>()->findChildren<QNetworkAccessManager *>().isEmpty())
        then();
    else
        QTimer::singleShot(10, state, [=] { afterUpload(state, then); });
}

QQuickWindow *window()
{
    for (QWindow *const candidate : QGuiApplication::topLevelWindows()) {
        auto *const quick = qobject_cast<QQuickWindow *>(candidate);
        if (quick && quick->isExposed())
            return quick;
    }
    return nullptr;
}

void afterNextFrame(QQuickWindow *target, const std::function<void()> &then)
{
    QObject::connect(target, &QQuickWindow::frameSwapped, target, then,
                     static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    target->update();
}

void measure(const QString &path)
{
    QQuickWindow *const target = window();
    if (!target) {
        QTimer::singleShot(10, QCoreApplication::instance(), [path] { measure(path); });
        return;
    }
    auto *const state = QQmlEngine::contextForObject(target)
                            ->engine()
                            ->rootContext()
                            ->contextProperty(QStringLiteral("app"))
                            .value<AppState *>();
    const double before = residentMiB();
    QElapsedTimer timer;
    timer.start();
    state->openKvt(path);
    state->setShowHex(true);
    afterNextFrame(target, [=] {
        const double size = static_cast<double>(state->hexModel()->byteCount()) / 1048576;
        const double opened = residentMiB() - before;
        std::printf("size %.0f MiB\nopen to drawn %lld ms\nmemory after opening %.2f times the size\n", size,
                    static_cast<long long>(timer.elapsed()), opened / size);
        afterUpload(state, [=] {
            std::printf("peak memory of the process %.2f times the size\n", peakMiB() / size);
            state->hexPatch(QStringLiteral("FF 00"));
            afterNextFrame(target, [=] {
                std::printf("memory after a patch %.2f times the size\n", (residentMiB() - before) / size);
                QCoreApplication::quit();
            });
        });
    });
}

// The program takes a file on its command line for one to open at once; this measures that opening, so the
// name comes by the environment.
void begin()
{
    QTimer::singleShot(0, QCoreApplication::instance(), [] { measure(qEnvironmentVariable("BENCH_FILE")); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)
