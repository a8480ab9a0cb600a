#include "ViewFixture.h"
#include "ui/ButtonTexts.h"
#include "ui/GarbageCollection.h"
#include "ui/SecondClicks.h"

#include <QDir>
#include <QQuickStyle>
#include <QtQuickTest>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    const TestEnvironment environment;
    qputenv("QT_QUICK_BACKEND", "software");
    QApplication application(argc, argv);
    // As at the start of the program: a dialog hands over paths without their leading slash.
    QDir::setCurrent(QDir::rootPath());
    QQuickStyle::setStyle(u"Basic"_s);
    disableAutoMnemonics();
    collectGarbageInOneGo();
    SecondClicks secondClicks;
    application.installEventFilter(&secondClicks);
    const UrlRecorder opened;
    ViewFixture fixture(&opened);
    return quick_test_main_with_setup(argc, argv, "views", QUICK_TEST_SOURCE_DIR, &fixture);
}
