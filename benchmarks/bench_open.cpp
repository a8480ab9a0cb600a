// The real program with a large file in the hex editor. Prints, each on a line of its own:
//   drawn MS       milliseconds from the opening to the frame that shows the file's first row
//   opened MIB     growth of the resident memory since before the opening
//   peak MIB       the whole process's peak, once the file was sent to the service and answered
//   patched MIB    growth of the resident memory after the first patch
//   BENCH_FILE=/absolute/path QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software bench_open

#include "RealWindow.h"
#include "api/VoxApiClient.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

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

void measure(const QString &path, QQuickWindow *target)
{
    AppState *const state = controllerOf(target);
    const double before = residentMiB();
    QElapsedTimer timer;
    timer.start();
    state->openKvt(path);
    state->setShowHex(true);
    afterNextFrame(target, [=] {
        const double drawn = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        const QQuickItem *const row = findItem(target->contentItem(), u"hexRow0"_s);
        if (!row || !row->isVisible() || row->property("digits").toString().isEmpty())
            giveUp("bench_open: the first row is not drawn");
        std::printf("drawn %.2f\nopened %.1f\n", drawn, residentMiB() - before);
        afterUpload(state, [=] {
            std::printf("peak %.1f\n", peakMiB());
            state->hexPatch(u"FF 00"_s);
            afterNextFrame(target, [=] {
                std::printf("patched %.1f\n", residentMiB() - before);
                QCoreApplication::quit();
            });
        });
    });
}

// The program takes a file on its command line for one to open at once; this measures that opening, so the
// name comes by the environment.
void begin()
{
    QTimer::singleShot(0, QCoreApplication::instance(), [] {
        whenStarted([](QQuickWindow *window) { measure(qEnvironmentVariable("BENCH_FILE"), window); });
    });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)
