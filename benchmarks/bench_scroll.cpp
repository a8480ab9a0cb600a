// The real program with a large file in the hex editor and a key pressed a thousand times: what each costs
// the program, from the key to the frame that shows it, in all its threads together, and whether the memory
// grows. Prints one line each. The key is Page Down from the file's top, or as BENCH_KEY says. With
// BENCH_OTHER the file is compared with that one, a search marks its matches, and the inspector and the list
// are open.
//   BENCH_FILE=/absolute/path [BENCH_KEY=right|digit] [BENCH_OTHER=/absolute/path] bench_scroll

#include "RealWindow.h"

#include "api/VoxApiClient.h"
#include "app/HexEditing.h"

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
    // Only the pages move the cursor by rows.
    int key = Qt::Key_PageDown;
    QString text;
};

void press(const Scrolling &run, int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, modifiers, text);
        QCoreApplication::sendEvent(run.window, &event);
    }
}

void report(const Scrolling &run)
{
    std::vector<double> sorted = run.pages;
    std::sort(sorted.begin(), sorted.end());
    std::printf("page, median %.2f ms\npage, 99th %.2f ms\npage, slowest %.2f ms\n",
                sorted[sorted.size() / 2], sorted[sorted.size() * 99 / 100], sorted.back());
    std::printf("memory after page %zu %.1f MiB\nmemory after page %zu %.1f MiB\n", settledAfter,
                run.residentWhenSettled, pageCount, residentMiB());
}

void scroll(Scrolling &run)
{
    if (run.pages.size() == settledAfter)
        run.residentWhenSettled = residentMiB();
    if (run.pages.size() == pageCount) {
        const HexModel *const model = controllerOf(run.window)->hexModel();
        // Two digits are a byte.
        if (model->cursor() < static_cast<int>(run.key == Qt::Key_A ? pageCount / 2 : pageCount))
            giveUp("bench_scroll: the keys did not scroll");
        report(run);
        QCoreApplication::quit();
        return;
    }
    const double before = computedMilliseconds();
    press(run, run.key, Qt::NoModifier, run.text);
    afterNextFrame(run.window, [&run, before] {
        run.pages.push_back(computedMilliseconds() - before);
        scroll(run);
    });
}

void beginScrolling(Scrolling &run)
{
    QQuickItem *const rows = findItem(run.window->contentItem(), u"hexRows"_s);
    if (!rows)
        giveUp("bench_scroll: there are no rows");
    rows->forceActiveFocus(Qt::TabFocusReason);
    afterNextFrame(run.window, [&run] { scroll(run); });
}

void addMarks(Scrolling &run, AppState *state, const QString &other)
{
    state->hexFind(u"00"_s);
    state->hexModel()->setCursor(0);
    press(run, Qt::Key_I, Qt::ControlModifier, {});
    state->hexEditing()->compare()->start(other);
    QObject::connect(state->hexEditing()->compare(), &HexCompare::finished, run.window, [&run] {
        press(run, Qt::Key_L, Qt::ControlModifier, {});
        // Until the matches are counted.
        QTimer::singleShot(1000, run.window, [&run] { beginScrolling(run); });
    });
}

void begin()
{
    static Scrolling run;
    if (const QString key = qEnvironmentVariable("BENCH_KEY"); key == "right"_L1)
        run.key = Qt::Key_Right;
    else if (key == "digit"_L1)
        run = {nullptr, {}, 0, Qt::Key_A, u"A"_s};
    whenStarted([](QQuickWindow *window) {
        run.window = window;
        AppState *const state = controllerOf(window);
        // Nobody answers there: the file is not to be sent anywhere.
        state->findChild<VoxApiClient *>()->setApiBase(u"http://127.0.0.1:9/"_s);
        state->openKvt(qEnvironmentVariable("BENCH_FILE"));
        if (state->hexModel()->byteCount() == 0)
            giveUp("bench_scroll: BENCH_FILE names no file");
        state->setShowHex(true);
        // By then the sending has failed.
        QTimer::singleShot(500, window, [state] {
            const QString other = qEnvironmentVariable("BENCH_OTHER");
            if (other.isEmpty())
                beginScrolling(run);
            else
                addMarks(run, state, other);
        });
    });
}

void beginWithProgram()
{
    QTimer::singleShot(0, QCoreApplication::instance(), begin);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWithProgram)
