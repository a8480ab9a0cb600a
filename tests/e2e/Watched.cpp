// The real program under observation: KVTEDITOR_WATCH says what for.
//   close   closes the window as soon as the event loop runs
//   opened  prints the name of the file that the command line opens, and closes the window once the file that
//           KVTEDITOR_CLOSE_WHEN names exists (at once when it names none)
//   refused prints the status text with which the command line's file is refused, and the name of the open
//           file, and closes the window
//   cores   prints the largest core dump that the process may leave, in bytes, and closes the window
//   dialog  closes the window while the file dialog is open in it
//   drawing prints the number of the interface by which the window is drawn, and closes it
//   fitting prints whether the window is maximized, once it is inside its screen, and the size that it goes
//           back to, and closes it
//   scan    closes the window right after a search of the folder that KVTEDITOR_SCAN_ROOT names has begun
// Whatever it says, a failure box is printed and answered with its button.

#include "WindowDriver.h"
#include "app/AppState.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QScreen>
#include <QTimer>

#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

void answerFailureBox()
{
    auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!box)
        return;
    std::printf("title: %s\nicon: %d\nbuttons: %d\nformat: %d\n%s\n", qPrintable(box->windowTitle()),
                box->icon(), static_cast<int>(box->buttons().size()), box->textFormat(),
                qPrintable(box->text()));
    box->button(QMessageBox::Ok)->click();
}

void waitForOpenFile(const WindowDriver &driver)
{
    driver.waitFor([&driver] { return !driver.app()->fileName().isEmpty(); }, u"the open file"_s);
    std::printf("open: %s\n", qPrintable(driver.app()->fileName()));
    const QString signal = qEnvironmentVariable("KVTEDITOR_CLOSE_WHEN");
    driver.waitFor([&signal] { return signal.isEmpty() || QFileInfo::exists(signal); }, u"the signal"_s);
}

void waitForRefusal(const WindowDriver &driver)
{
    driver.waitFor([&driver] { return driver.app()->statusOK() == 0; }, u"the refusal"_s);
    std::printf("refused: %s\nopen: %s\n", qPrintable(driver.app()->status()),
                qPrintable(driver.app()->fileName()));
}

void tellCoreDumps()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_CORE, &limit) == 0)
        std::printf("cores: %llu\n", static_cast<unsigned long long>(limit.rlim_cur));
}

void openDialog(const WindowDriver &driver)
{
    driver.click(u"openFileButton"_s);
    driver.item(u"chooserList"_s);
    std::printf("dialog: open\n");
}

void beginScan(const WindowDriver &driver)
{
    // A name that nothing has, so that the scan goes through the whole tree.
    driver.app()->scanFolder(qEnvironmentVariable("KVTEDITOR_SCAN_ROOT"), true, u"no such name"_s, {}, {},
                             {});
    std::printf("%s\n", driver.app()->searchBusy() ? "scan: running" : "scan: not running");
}

void tellDrawing(const WindowDriver &driver)
{
    driver.waitFor([&driver] { return driver.window()->isSceneGraphInitialized(); },
                   u"the means of drawing"_s);
    std::printf("drawn: %d\n", driver.window()->rendererInterface()->graphicsApi());
}

void tellFitting(const WindowDriver &driver)
{
    const QQuickWindow *const window = driver.window();
    const QRect screen = window->screen()->availableGeometry();
    driver.waitFor([&] { return window->isExposed() && screen.contains(window->frameGeometry()); },
                   u"the window inside its screen"_s);
    std::printf("maximized: %d\n", window->windowState() == Qt::WindowMaximized);
    driver.window()->showNormal();
    driver.waitFor([window] { return window->size() == QSize(1440, 900); }, u"the window's own size"_s);
    std::printf("normal: %dx%d\n", window->width(), window->height());
}

void closeWindow(const QByteArray &wish)
{
    const WindowDriver driver;
    if (wish == "opened")
        waitForOpenFile(driver);
    else if (wish == "refused")
        waitForRefusal(driver);
    else if (wish == "cores")
        tellCoreDumps();
    else if (wish == "dialog")
        openDialog(driver);
    else if (wish == "drawing")
        tellDrawing(driver);
    else if (wish == "fitting")
        tellFitting(driver);
    else if (wish == "scan")
        beginScan(driver);
    driver.window()->close();
}

void watch()
{
    const QByteArray wish = qgetenv("KVTEDITOR_WATCH");
    auto *const boxes = new QTimer(QCoreApplication::instance());
    QObject::connect(boxes, &QTimer::timeout, boxes, answerFailureBox);
    boxes->start(20);
    if (!wish.isEmpty())
        QTimer::singleShot(0, boxes, [wish] { closeWindow(wish); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)
