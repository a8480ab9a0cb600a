// The real program under observation: KVTEDITOR_WATCH says what for.
//   close   closes the window as soon as the event loop runs
//   opened  prints the name of the file that the command line opens, and closes the window once the file that
//           KVTEDITOR_CLOSE_WHEN names exists (at once when it names none)
// Whatever it says, a failure box is printed and answered with its button.

#include "WindowDriver.h"
#include "app/AppState.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>

namespace {

void answerFailureBox()
{
    auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!box)
        return;
    std::printf("title: %s\nicon: %d\nbuttons: %d\n%s\n", qPrintable(box->windowTitle()), box->icon(),
                static_cast<int>(box->buttons().size()), qPrintable(box->text()));
    box->button(QMessageBox::Ok)->click();
}

void closeWindow(bool afterOpening)
{
    const WindowDriver driver;
    if (afterOpening) {
        driver.waitFor([&driver] { return !driver.app()->fileName().isEmpty(); },
                       QStringLiteral("the open file"));
        std::printf("open: %s\n", qPrintable(driver.app()->fileName()));
        const QString signal = qEnvironmentVariable("KVTEDITOR_CLOSE_WHEN");
        driver.waitFor([&signal] { return signal.isEmpty() || QFileInfo::exists(signal); },
                       QStringLiteral("the signal"));
    }
    driver.window()->close();
}

void watch()
{
    const QByteArray wish = qgetenv("KVTEDITOR_WATCH");
    auto *const boxes = new QTimer(QCoreApplication::instance());
    QObject::connect(boxes, &QTimer::timeout, boxes, answerFailureBox);
    boxes->start(20);
    if (wish == "close" || wish == "opened")
        QTimer::singleShot(0, boxes, [wish] { closeWindow(wish == "opened"); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)
