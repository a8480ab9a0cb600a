// A Qt Quick window of the program's size with next to nothing in it, drawn the same way: the least that a
// program of this kind takes to start, in time and in memory.

#include "platform/Graphics.h"

#include <QApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char **argv)
{
    const QApplication app(argc, argv);
    if (hasNoGraphicsCard())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQmlApplicationEngine engine;
    // A second color, so that the window can be seen to be drawn.
    engine.loadData(
        "import QtQuick\nimport QtQuick.Controls.Basic\nimport QtQuick.Layouts\nimport QtQuick.Dialogs\n"
        "ApplicationWindow {\n"
        "    width: 1440; height: 900; visible: true\n"
        "    Rectangle { width: 100; height: 900; color: \"black\" }\n"
        "}\n");
    return QApplication::exec();
}
