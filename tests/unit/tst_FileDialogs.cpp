#include "platform/FileDialogs.h"

#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestFileDialogs : public QObject
{
    Q_OBJECT

private slots:
    void desktops_data();
    void desktops();
    void notWanted_data();
    void notWanted();
};

void TestFileDialogs::desktops_data()
{
    QTest::addColumn<QStringList>("desktops");
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<bool>("has");

    const QString gtk = u"libqgtk3.so"_s;
    const QString kde = u"libKDEPlasmaPlatformTheme6.so"_s;
    QTest::newRow("none") << QStringList{QString()} << QStringList{gtk, kde} << false;
    QTest::newRow("gtk") << QStringList{u"GNOME"_s} << QStringList{gtk} << true;
    QTest::newRow("gtk-without-plugin") << QStringList{u"GNOME"_s} << QStringList{kde} << false;
    QTest::newRow("other-case") << QStringList{u"xfce"_s} << QStringList{gtk} << true;
    QTest::newRow("second-name") << QStringList{u"ubuntu"_s, u"GNOME"_s} << QStringList{gtk} << true;
    QTest::newRow("kde") << QStringList{u"KDE"_s} << QStringList{kde} << true;
    QTest::newRow("kde-without-plugin") << QStringList{u"KDE"_s} << QStringList{gtk} << false;
    QTest::newRow("lxqt") << QStringList{u"LXQt"_s} << QStringList{u"libqtlxqt.so"_s} << true;
    QTest::newRow("window-manager") << QStringList{u"sway"_s} << QStringList{gtk, kde} << false;
}

void TestFileDialogs::desktops()
{
    QFETCH(QStringList, desktops);
    QFETCH(QStringList, plugins);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(u"platformthemes"_s));
    for (const QString &plugin : plugins) {
        QFile file(folder.filePath(u"platformthemes/"_s + plugin));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QTEST(desktopHasFileDialogs(desktops, folder.path()), "has");
}

void TestFileDialogs::notWanted_data()
{
    QTest::addColumn<QByteArray>("platform");
    QTest::addColumn<QByteArray>("theme");
    QTest::addColumn<QByteArray>("bus");

    QTest::newRow("user's") << QByteArray("xcb") << QByteArray("gtk3") << QByteArray();
    QTest::newRow("no-screen") << QByteArray("offscreen") << QByteArray() << QByteArray();
    QTest::newRow("no-bus") << QByteArray("xcb") << QByteArray() << QByteArray("unix:path=/nowhere");
}

void TestFileDialogs::notWanted()
{
    QFETCH(QByteArray, platform);
    QFETCH(QByteArray, theme);
    QFETCH(QByteArray, bus);
    qputenv("QT_QPA_PLATFORM", platform);
    qunsetenv("QT_QPA_PLATFORMTHEME");
    if (!theme.isEmpty())
        qputenv("QT_QPA_PLATFORMTHEME", theme);
    if (!bus.isEmpty())
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
    QVERIFY(!wantsPortalFileDialogs());
}

KVTEDITOR_TEST_MAIN(TestFileDialogs)
#include "tst_FileDialogs.moc"
