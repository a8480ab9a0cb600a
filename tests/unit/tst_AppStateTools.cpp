#include "api/VoxApiClient.h"
#include "app/AppState.h"
#include "platform/ToolLauncher.h"
#include "platform/WebToolWindow.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString manualName = u"KVT_File_Editor_2026_User_Manual.pdf"_s;

/// A file in a folder that is there for this test; both go again.
class FileInPlace
{
public:
    explicit FileInPlace(const QString &path)
        : m_path(path)
        , m_folder(QFileInfo(path).absolutePath())
        , m_folderIsOurs(!QFileInfo::exists(m_folder))
    {
        makeFile(path, "%PDF");
    }
    ~FileInPlace()
    {
        QFile::remove(m_path);
        if (m_folderIsOurs) {
            QDir().rmdir(m_folder);
        }
    }
    Q_DISABLE_COPY_MOVE(FileInPlace)

private:
    QString m_path;
    QString m_folder;
    bool m_folderIsOurs;
};

QString besideProgram(const QString &path)
{
    return QCoreApplication::applicationDirPath() + u'/' + path;
}

/// A manual that the source checkout holds anyway; looked for last, and only in a developer's build.
QString manualOfTheTree()
{
    const QDir base(QFileInfo(ToolLauncher::toolsRoot()).absolutePath());
    for (const QString &folder : {u"docs/"_s, u"Release/"_s, u"server/App_Data/manuals/"_s}) {
        if (base.exists(folder + manualName)) {
            return base.absoluteFilePath(folder + manualName);
        }
    }
    return {};
}

QList<QWidget *> toolWindows()
{
    QList<QWidget *> windows;
    const QList<QWidget *> all = QApplication::topLevelWidgets();
    for (QWidget *widget : all) {
        if (qobject_cast<WebToolWindow *>(widget)) {
            windows.append(widget);
        }
    }
    return windows;
}

} // namespace

class TestAppStateTools : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void toolsRoot_isAFolderCalledTools();
    void findHelpPdf_looksInOrder();
    void goHelp_withoutManual();
    void goHelp_opensTheManual();

    void openWebTool_makesOneHiddenWindow();
    void openWebTool_handsAddressToTheDesktop_data();
    void openWebTool_handsAddressToTheDesktop();
    void openWebTool_outcomeIsNotReported();
    void openWebTool_withoutAServiceSaysWhy();
    void webToolWindow_goesWithTheController();

private:
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateTools::init()
{
    m_desktop = std::make_unique<UrlRecorder>();
    m_state = std::make_unique<AppState>();
}

void TestAppStateTools::cleanup()
{
    m_state.reset();
    m_desktop.reset();
}

void TestAppStateTools::toolsRoot_isAFolderCalledTools()
{
    const QString root = ToolLauncher::toolsRoot();
    QVERIFY(QDir::isAbsolutePath(root));
    QCOMPARE(QFileInfo(root).fileName(), u"tools"_s);
}

void TestAppStateTools::findHelpPdf_looksInOrder()
{
    QCOMPARE(ToolLauncher::findHelpPdf(), manualOfTheTree());
    const FileInPlace inDocs(besideProgram(u"docs/"_s + manualName));
    QCOMPARE(ToolLauncher::findHelpPdf(), besideProgram(u"docs/"_s + manualName));
    const FileInPlace beside(besideProgram(manualName));
    QCOMPARE(ToolLauncher::findHelpPdf(), besideProgram(manualName));
}

void TestAppStateTools::goHelp_withoutManual()
{
    const bool missing = manualOfTheTree().isEmpty();
    m_state->goHelp();
    QCOMPARE(m_state->status(), missing ? u"User manual PDF was not found."_s : u"Opened User Manual."_s);
    QCOMPARE(m_state->statusOK(), missing ? 0 : 1);
    QCOMPARE(m_desktop->opened.size(), missing ? 0 : 1);
    QCOMPARE(toolWindows().size(), missing ? 0 : 1);
}

void TestAppStateTools::goHelp_opensTheManual()
{
    const FileInPlace manual(besideProgram(u"docs/"_s + manualName));
    m_state->goHelp();
    QCOMPARE(m_state->status(), u"Opened User Manual."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(besideProgram(u"docs/"_s + manualName))});
    QCOMPARE(toolWindows().size(), 1);
    QCOMPARE(toolWindows().first()->windowTitle(), u"User Manual"_s);
}

void TestAppStateTools::openWebTool_makesOneHiddenWindow()
{
    QCOMPARE(toolWindows().size(), 0);
    m_state->openWebTool(u"https://x.example/a"_s, u"First"_s);
    QCOMPARE(toolWindows().size(), 1);
    QWidget *window = toolWindows().first();
    QCOMPARE(window->windowTitle(), u"First"_s);
    m_state->openWebTool(u"https://x.example/b"_s, u"Second"_s);
    QCOMPARE(toolWindows(), QList<QWidget *>{window});
    QCOMPARE(window->windowTitle(), u"Second"_s);
    QVERIFY(!window->isVisible());
    QVERIFY(!window->parent());
    QCOMPARE(m_desktop->opened,
             QList<QUrl>({QUrl(u"https://x.example/a"_s), QUrl(u"https://x.example/b"_s)}));
}

void TestAppStateTools::openWebTool_handsAddressToTheDesktop_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("opened");

    QTest::newRow("https") << u"https://x.example/api/checksum-gui.html"_s
                           << QByteArray("https://x.example/api/checksum-gui.html");
    QTest::newRow("file") << u"file:///path/manual.pdf"_s << QByteArray("file:///path/manual.pdf");
    QTest::newRow("blank-is-encoded") << u"https://x.example/a b"_s << QByteArray("https://x.example/a%20b");
    QTest::newRow("encoded") << u"https://x.example/a%20b?c=%25"_s
                             << QByteArray("https://x.example/a%20b?c=%25");
}

void TestAppStateTools::openWebTool_handsAddressToTheDesktop()
{
    QFETCH(QString, url);
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->openWebTool(url, u"Tool <b>%1"_s);
    QCOMPARE(m_desktop->opened.size(), 1);
    QTEST(m_desktop->opened.first().toEncoded(), "opened");
    QCOMPARE(m_state->status(), u"Opened Tool <b>%1."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(changes.count(), 1);
}

void TestAppStateTools::openWebTool_outcomeIsNotReported()
{
    m_state->openWebTool(QString(), u"Nothing"_s);
    QCOMPARE(m_state->status(), u"Opened Nothing."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

void TestAppStateTools::openWebTool_withoutAServiceSaysWhy()
{
    m_state->findChild<VoxApiClient *>()->refuseAll(u"There is no service."_s);
    m_state->openWebTool(u"checksum-gui.html"_s, u"Tool"_s);
    QCOMPARE(m_state->status(), u"There is no service."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
    m_state->openWebTool(u"file:///path/manual.pdf"_s, u"User Manual"_s);
    QCOMPARE(m_state->status(), u"Opened User Manual."_s);
    QCOMPARE(m_desktop->opened.size(), 1);
}

void TestAppStateTools::webToolWindow_goesWithTheController()
{
    m_state->openWebTool(u"https://x.example/"_s, u"Tool"_s);
    QCOMPARE(toolWindows().size(), 1);
    m_state.reset();
    QCOMPARE(toolWindows().size(), 0);
}

KVTEDITOR_TEST_MAIN(TestAppStateTools)
#include "tst_AppStateTools.moc"
