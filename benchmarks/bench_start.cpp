// The real program from its start to its first frame, or, with a file on its command line, to the frame that
// shows the identifiers that the service has read. Prints how many milliseconds after BENCH_BEGIN, a time in
// nanoseconds since 1970, that frame was drawn.
//   BENCH_BEGIN=$(date +%s%N) bench_start [/absolute/path]

#include "RealWindow.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

// At once, because the next frame may be on its way.
[[noreturn]] void printAndEnd()
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const std::chrono::nanoseconds begin(qEnvironmentVariable("BENCH_BEGIN").toLongLong());
    const Milliseconds taken = std::chrono::system_clock::now().time_since_epoch() - begin;
    std::printf("%.1f\n", taken.count());
    std::fflush(stdout);
    std::quick_exit(EXIT_SUCCESS);
}

void watch()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    auto *const window = windows.isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(windows.constFirst());
    if (!window)
        giveUp("bench_start: there is no window");
    const bool opensFile = QCoreApplication::arguments().size() > 1;
    const AppState *const state = controllerOf(window);
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window,
        [opensFile, state] {
            if (!opensFile || !state->vin().isEmpty())
                printAndEnd();
        },
        Qt::DirectConnection);
}

void beginWithProgram()
{
    QTimer::singleShot(0, QCoreApplication::instance(), watch);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWithProgram)
