// The real program with a large file in the hex editor, scrolled from its top by Page Down: what a page costs
// the program, from the key to the frame that shows it, in all its threads together, and whether the memory
// grows. Prints one line each.
//   BENCH_FILE=/absolute/path bench_scroll

#include "RealWindow.h"

#include "api/VoxApiClient.h"

#include <QKeyEvent>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t pageCount = 1000;
constexpr std::size_t settledAfter = 100;

struct Scrolling
{
    QQuickWindow *window = nullptr;
    std::vector<double> pages;
    double residentWhenSettled = 0;
};

void report(const Scrolling &run)
{
    std::vector<double> sorted = run.pages;
    std::sort(sorted.begin(), sorted.end());
    std::printf("page, median %.2f ms\npage, slowest %.2f ms\n", sorted[sorted.size() / 2], sorted.back());
    std::printf("memory after page %zu %.1f MiB\nmemory after page %zu %.1f MiB\n", settledAfter,
                run.residentWhenSettled, pageCount, residentMiB());
}

void scroll(Scrolling &run)
{
    if (run.pages.size() == settledAfter)
        run.residentWhenSettled = residentMiB();
    if (run.pages.size() == pageCount) {
        if (controllerOf(run.window)->hexModel()->currentRow() < static_cast<int>(pageCount))
            giveUp("bench_scroll: the keys did not scroll");
        report(run);
        QCoreApplication::quit();
        return;
    }
    const double before = computedMilliseconds();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
    QCoreApplication::sendEvent(run.window, &press);
    afterNextFrame(run.window, [&run, before] {
        run.pages.push_back(computedMilliseconds() - before);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_PageDown, Qt::NoModifier);
        QCoreApplication::sendEvent(run.window, &release);
        scroll(run);
    });
}

void begin()
{
    static Scrolling run;
    whenShown([](QQuickWindow *window) {
        run.window = window;
        AppState *const state = controllerOf(window);
        // Nobody answers there: the file is not to be sent anywhere.
        state->findChild<VoxApiClient *>()->setApiBase(u"http://127.0.0.1:9/"_s);
        state->openKvt(qEnvironmentVariable("BENCH_FILE"));
        if (state->hexModel()->byteCount() == 0)
            giveUp("bench_scroll: BENCH_FILE names no file");
        state->setShowHex(true);
        // By then the sending has failed, and all views are made.
        QTimer::singleShot(3000, window, [window] {
            QQuickItem *const rows = findItem(window->contentItem(), u"hexRows"_s);
            if (!rows)
                giveUp("bench_scroll: there are no rows");
            rows->forceActiveFocus(Qt::TabFocusReason);
            afterNextFrame(window, [] { scroll(run); });
        });
    });
}

void beginWithProgram()
{
    QTimer::singleShot(0, QCoreApplication::instance(), begin);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWithProgram)
