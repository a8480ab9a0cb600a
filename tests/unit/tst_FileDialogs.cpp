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
    void wanted_data();
    void wanted();
};

void TestFileDialogs::desktops_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QStringList>("desktops");
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<bool>("has");

    const QString gtk = u"libqgtk3.so"_s;
    const QString kde = u"libKDEPlasmaPlatformTheme6.so"_s;
    QTest::newRow("none") << QString() << QStringList{QString()} << QStringList{gtk, kde} << false;
    QTest::newRow("gtk") << QString() << QStringList{u"GNOME"_s} << QStringList{gtk} << true;
    QTest::newRow("gtk-without-plugin") << QString() << QStringList{u"GNOME"_s} << QStringList{kde} << false;
    QTest::newRow("other-case") << QString() << QStringList{u"xfce"_s} << QStringList{gtk} << true;
    QTest::newRow("second-name") << QString() << QStringList{u"ubuntu"_s, u"GNOME"_s} << QStringList{gtk}
                                 << true;
    QTest::newRow("kde") << QString() << QStringList{u"KDE"_s} << QStringList{kde} << true;
    QTest::newRow("kde-without-plugin") << QString() << QStringList{u"KDE"_s} << QStringList{gtk} << false;
    QTest::newRow("lxqt") << QString() << QStringList{u"LXQt"_s} << QStringList{u"libqtlxqt.so"_s} << true;
    QTest::newRow("window-manager") << QString() << QStringList{u"sway"_s} << QStringList{gtk, kde} << false;
    QTest::newRow("theme") << u"gtk3"_s << QStringList{u"sway"_s} << QStringList{gtk} << true;
    // Qt's own, which has no dialogs.
    QTest::newRow("theme-named-as-a-desktop") << u"gnome"_s << QStringList() << QStringList{gtk} << false;
    QTest::newRow("theme-before-desktop")
        << u"qt6ct"_s << QStringList{u"GNOME"_s} << QStringList{gtk} << false;
    QTest::newRow("portal") << u"xdgdesktopportal"_s << QStringList()
                            << QStringList{u"libqxdgdesktopportal.so"_s} << true;
}

void TestFileDialogs::desktops()
{
    QFETCH(QString, theme);
    QFETCH(QStringList, desktops);
    QFETCH(QStringList, plugins);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(u"platformthemes"_s));
    for (const QString &plugin : plugins) {
        QFile file(folder.filePath(u"platformthemes/"_s + plugin));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QTEST(desktopHasFileDialogs(theme, desktops, folder.path()), "has");
}

void TestFileDialogs::wanted_data()
{
    QTest::addColumn<QByteArray>("platform");
    QTest::addColumn<QByteArray>("theme");
    QTest::addColumn<QByteArray>("wish");
    QTest::addColumn<FileDialogs>("dialogs");

    QTest::newRow("no-theme-no-bus") << QByteArray("xcb") << QByteArray() << QByteArray() << FileDialogs::Own;
    QTest::newRow("theme-without-dialogs")
        << QByteArray("xcb") << QByteArray("qt6ct") << QByteArray() << FileDialogs::Own;
    QTest::newRow("no-screen") << QByteArray("offscreen") << QByteArray() << QByteArray()
                               << FileDialogs::Desktop;
    QTest::newRow("no-screen-either")
        << QByteArray("minimal") << QByteArray() << QByteArray() << FileDialogs::Desktop;
    QTest::newRow("asked-for") << QByteArray("offscreen") << QByteArray("gtk3") << QByteArray("own")
                               << FileDialogs::Own;
}

void TestFileDialogs::wanted()
{
    QFETCH(QByteArray, platform);
    QFETCH(QByteArray, theme);
    QFETCH(QByteArray, wish);
    qputenv("QT_QPA_PLATFORM", platform);
    qputenv("QT_QPA_PLATFORMTHEME", theme);
    qputenv("KVTEDITOR_FILE_DIALOGS", wish);
    qputenv("XDG_CURRENT_DESKTOP", "sway");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    QTEST(wantedFileDialogs(), "dialogs");
}

KVTEDITOR_TEST_MAIN(TestFileDialogs)
#include "tst_FileDialogs.moc"
