#include "app/AppState.h"
#include "platform/ToolLauncher.h"
#include "platform/WebToolWindow.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <iterator>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString untouched = u"untouched"_s;
const QString notFound = u"Tool executable was not found."_s;
const QString manualMissing = u"User manual PDF was not found."_s;
const QString manualName = u"KVT_File_Editor_2026_User_Manual.pdf"_s;
const QString bundle = u"vbf_phf_bin/Ford VBF-PHF BIN Converter.app"_s;
// Asks this program to start the J1939 converter and to end at once.
constexpr auto launchAndEnd = "--launch-and-end"_L1;

/// Folder of this program, which it has to itself.
QString besideProgram(const QString &path)
{
    return QCoreApplication::applicationDirPath() + u'/' + path;
}

/// Folder that the launcher of this program takes for the source checkout.
QString inCheckout(const QString &path)
{
    return besideProgram(u"../checkout/"_s + path);
}

QString canonical(const QString &path)
{
    return QFileInfo(path).canonicalFilePath();
}

/// A program that writes its name, working folder and number of arguments to a file beside the tools.
bool makeProgram(const QString &path, const QString &report, const QByteArray &before = {})
{
    const QByteArray script = "#!/bin/sh\n" + before + "printf '%s\\n' \"$0\" \"$(pwd -P)\" \"$#\" > '"
        + QFile::encodeName(report) + ".part'\nmv '" + QFile::encodeName(report) + ".part' '"
        + QFile::encodeName(report) + "'\n";
    return QFile::setPermissions(makeFile(path, script),
                                 QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
                                          : QStringList();
}

/// A pipe at which a program waits until it is let through, at the latest when this object goes.
class Gate
{
public:
    explicit Gate(const QString &path)
        : m_path(QFile::encodeName(path))
        , m_made(::mkfifo(m_path.constData(), 0600) == 0)
    {
    }
    ~Gate()
    {
        const int pipe = ::open(m_path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (pipe >= 0)
            ::close(pipe);
    }
    Q_DISABLE_COPY_MOVE(Gate)

    bool made() const { return m_made; }
    /// False while no program waits, and true ever after.
    bool open()
    {
        if (!m_opened) {
            const int pipe = ::open(m_path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            m_opened = pipe >= 0 && ::close(pipe) == 0;
        }
        return m_opened;
    }

private:
    QByteArray m_path;
    bool m_made;
    bool m_opened = false;
};

/// While it lives, the system has no descriptor left for this process, and so no new process either.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        m_set = ::setrlimit(RLIMIT_NOFILE, &none) == 0;
    }
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    Q_DISABLE_COPY_MOVE(NoDescriptors)

    bool set() const { return m_set; }

private:
    rlimit m_before{};
    bool m_set = false;
};

struct Tool
{
    const char *key;
    bool (*launch)(QString *error);
    /// Below the tools folder, the first of them wins.
    QStringList candidates;
};

const Tool plainTools[] = {
    {"j1939", ToolLauncher::launchJ1939, {u"j1939_dtc_converter/j1939_gui.exe"_s}},
    {"checksum",
     ToolLauncher::launchChecksum,
     {u"checksum/Launch_LSuite_VOX_Theme.bat"_s, u"checksum/checksum-gui.exe"_s}},
    {"delco",
     ToolLauncher::launchDelcoChecksum,
     {u"delco-checksum/checksum-gui.exe"_s, u"delco-checksum/gm-ecu-checksum-corrector.exe"_s}},
    {"efd", ToolLauncher::launchEfdReader, {u"efd_reader/EFD_Reader.exe"_s}},
};

} // namespace

class TestToolLauncher : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void toolsRoot_prefersTheCheckout();

    void startsProgram_data();
    void startsProgram();
    void firstCandidateWins_data();
    void firstCandidateWins();
    void checkoutComesBeforeProgramFolder();
    void j1939BesideProgramWhenTheCheckoutHasNone();
    void othersAreNotLookedForBesideProgram_data();
    void othersAreNotLookedForBesideProgram();
    void missing_data();
    void missing();
    void cannotBeStarted_data();
    void cannotBeStarted();
    void brokenLinkIsNoCandidate();
    void outlivesItsParent();

    void vbfPhfBin_missing();
    void vbfPhfBin_opens_data();
    void vbfPhfBin_opens();
    void vbfPhfBin_cannotBeOpened();

    void findHelpPdf_order();
    void launchHelpPdf();

    void launchTool_reports_data();
    void launchTool_reports();
    void launchTool_missing_data();
    void launchTool_missing();
    void launchTool_silentFailure();
    void launchTool_unknownKey_data();
    void launchTool_unknownKey();
    void launchTool_help();
    void goHelp();
    void serviceUrl_data();
    void serviceUrl();
    void checksumPageOpens();
    void webToolWindow_keepsLastTitle();

private:
    QString report() const { return m_reports->filePath(u"report"_s); }
    /// Whether the program at that path has run as it should.
    bool hasRun(const QString &path) const
    {
        return linesOf(report()) == QStringList{path, canonical(QFileInfo(path).path()), u"0"_s};
    }
    /// What opening the bundle at that path comes to on this system.
    static QString openError(const QString &path)
    {
        return QFileInfo(u"/usr/bin/open"_s).isExecutable() ? QString() : u"Failed to open "_s + path;
    }

    std::unique_ptr<QTemporaryDir> m_reports;
    std::unique_ptr<UrlRecorder> m_desktop;
};

void TestToolLauncher::init()
{
    cleanup();
    m_reports = std::make_unique<QTemporaryDir>();
    m_desktop = std::make_unique<UrlRecorder>();
}

void TestToolLauncher::cleanup()
{
    for (const QString &folder : {besideProgram(u"tools"_s), besideProgram(u"docs"_s),
                                  besideProgram(u"../Resources"_s), inCheckout({})}) {
        QDir(folder).removeRecursively();
    }
    QFile::remove(besideProgram(manualName));
    m_desktop.reset();
    m_reports.reset();
}

void TestToolLauncher::toolsRoot_prefersTheCheckout()
{
    QCOMPARE(ToolLauncher::toolsRoot(), besideProgram(u"tools"_s));
    QVERIFY(QDir().mkpath(besideProgram(u"tools"_s)));
    QCOMPARE(ToolLauncher::toolsRoot(), besideProgram(u"tools"_s));
    QVERIFY(QDir().mkpath(inCheckout(u"src"_s)));
    QCOMPARE(ToolLauncher::toolsRoot(), besideProgram(u"tools"_s));
    makeFile(inCheckout(u"tools"_s), "a file");
    QCOMPARE(ToolLauncher::toolsRoot(), besideProgram(u"tools"_s));
    QVERIFY(QFile::remove(inCheckout(u"tools"_s)));
    QVERIFY(QDir().mkpath(inCheckout(u"tools"_s)));
    QCOMPARE(ToolLauncher::toolsRoot(), canonical(inCheckout(u"tools"_s)));
}

void TestToolLauncher::startsProgram_data()
{
    QTest::addColumn<int>("tool");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("checkout");

    for (size_t tool = 0; tool < std::size(plainTools); ++tool) {
        for (const QString &path : plainTools[tool].candidates) {
            const QByteArray name = QFileInfo(path).fileName().toUtf8();
            QTest::addRow("%s-%s-beside-program", plainTools[tool].key, name.constData())
                << static_cast<int>(tool) << path << false;
            QTest::addRow("%s-%s-in-checkout", plainTools[tool].key, name.constData())
                << static_cast<int>(tool) << path << true;
        }
    }
}

void TestToolLauncher::startsProgram()
{
    QFETCH(int, tool);
    QFETCH(QString, path);
    QFETCH(bool, checkout);
    QVERIFY(QDir().mkpath(checkout ? inCheckout(u"tools"_s) : besideProgram(u"tools"_s)));
    const QString program = QDir(ToolLauncher::toolsRoot()).filePath(path);
    QVERIFY(makeProgram(program, report()));
    const QString workingFolder = QDir::currentPath();
    QString error = untouched;
    QVERIFY(plainTools[tool].launch(&error));
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(program));
    QCOMPARE(error, untouched);
    QCOMPARE(QDir::currentPath(), workingFolder);
    QVERIFY(QFile::remove(report()));
    QVERIFY(plainTools[tool].launch(nullptr));
    WAIT_VERIFY(QFileInfo::exists(report()));
}

void TestToolLauncher::firstCandidateWins_data()
{
    QTest::addColumn<int>("tool");

    QTest::newRow("checksum") << 1;
    QTest::newRow("delco") << 2;
}

void TestToolLauncher::firstCandidateWins()
{
    QFETCH(int, tool);
    const QStringList candidates = plainTools[tool].candidates;
    for (const QString &path : candidates) {
        QVERIFY(makeProgram(besideProgram(u"tools/"_s + path), report()));
    }
    QVERIFY(plainTools[tool].launch(nullptr));
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(besideProgram(u"tools/"_s + candidates.first())));
}

void TestToolLauncher::checkoutComesBeforeProgramFolder()
{
    const QString path = u"tools/j1939_dtc_converter/j1939_gui.exe"_s;
    QVERIFY(makeProgram(besideProgram(path), report()));
    QVERIFY(makeProgram(inCheckout(path), report()));
    QVERIFY(ToolLauncher::launchJ1939());
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(canonical(inCheckout(path))));
}

void TestToolLauncher::j1939BesideProgramWhenTheCheckoutHasNone()
{
    const QString path = u"tools/j1939_dtc_converter/j1939_gui.exe"_s;
    QVERIFY(QDir().mkpath(inCheckout(u"tools"_s)));
    QVERIFY(makeProgram(besideProgram(path), report()));
    QVERIFY(ToolLauncher::launchJ1939());
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(besideProgram(path)));
}

void TestToolLauncher::othersAreNotLookedForBesideProgram_data()
{
    QTest::addColumn<int>("tool");

    QTest::newRow("checksum") << 1;
    QTest::newRow("delco") << 2;
    QTest::newRow("efd") << 3;
}

void TestToolLauncher::othersAreNotLookedForBesideProgram()
{
    QFETCH(int, tool);
    QVERIFY(QDir().mkpath(inCheckout(u"tools"_s)));
    for (const QString &path : plainTools[tool].candidates) {
        QVERIFY(makeProgram(besideProgram(u"tools/"_s + path), report()));
    }
    QString error;
    QVERIFY(!plainTools[tool].launch(&error));
    QCOMPARE(error, notFound);
}

void TestToolLauncher::missing_data()
{
    QTest::addColumn<int>("tool");

    for (size_t tool = 0; tool < std::size(plainTools); ++tool) {
        QTest::newRow(plainTools[tool].key) << static_cast<int>(tool);
    }
}

void TestToolLauncher::missing()
{
    QFETCH(int, tool);
    QString error = untouched;
    QVERIFY(!plainTools[tool].launch(&error));
    QCOMPARE(error, notFound);
    QVERIFY(!plainTools[tool].launch(nullptr));
    QVERIFY(QDir().mkpath(besideProgram(u"tools"_s)));
    error = untouched;
    QVERIFY(!plainTools[tool].launch(&error));
    QCOMPARE(error, notFound);
}

void TestToolLauncher::cannotBeStarted_data()
{
    QTest::addColumn<bool>("folder");

    QTest::newRow("not-executable") << false;
    QTest::newRow("folder") << true;
}

void TestToolLauncher::cannotBeStarted()
{
    QFETCH(bool, folder);
    const QString path = besideProgram(u"tools/checksum/Launch_LSuite_VOX_Theme.bat"_s);
    QVERIFY(makeProgram(besideProgram(u"tools/checksum/checksum-gui.exe"_s), report()));
    QVERIFY(folder ? QDir().mkpath(path) : !makeFile(path, "#!/bin/sh\n").isEmpty());
    QString error = untouched;
    QVERIFY(!ToolLauncher::launchChecksum(&error));
    QCOMPARE(error, untouched);
    QVERIFY(!ToolLauncher::launchChecksum());
}

void TestToolLauncher::brokenLinkIsNoCandidate()
{
    const QString second = besideProgram(u"tools/checksum/checksum-gui.exe"_s);
    QVERIFY(makeProgram(second, report()));
    QVERIFY(QFile::link(u"nowhere"_s, besideProgram(u"tools/checksum/Launch_LSuite_VOX_Theme.bat"_s)));
    QVERIFY(ToolLauncher::launchChecksum());
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(second));
}

void TestToolLauncher::outlivesItsParent()
{
    Gate gate(m_reports->filePath(u"gate"_s));
    QVERIFY(gate.made());
    const QString path = besideProgram(u"tools/j1939_dtc_converter/j1939_gui.exe"_s);
    QVERIFY(makeProgram(path, report(),
                        "read -r line < '" + QFile::encodeName(m_reports->filePath(u"gate"_s)) + "'\n"));
    QProcess parent;
    // A helper that held on to the parent's channels would keep them open beyond its end.
    parent.start(QCoreApplication::applicationFilePath(), {launchAndEnd});
    QVERIFY(parent.waitForFinished());
    QCOMPARE(parent.exitStatus(), QProcess::NormalExit);
    QCOMPARE(parent.exitCode(), 0);
    QVERIFY(!QFileInfo::exists(report()));
    WAIT_VERIFY(gate.open());
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(path));
}

void TestToolLauncher::vbfPhfBin_missing()
{
    QString error = untouched;
    QVERIFY(!ToolLauncher::launchVbfPhfBin(&error));
    QCOMPARE(error, u"VBF/PHF converter was not found."_s);
    QVERIFY(!ToolLauncher::launchVbfPhfBin());
}

void TestToolLauncher::vbfPhfBin_opens_data()
{
    QTest::addColumn<QStringList>("bundles");

    const QString resources = u"../Resources/tools/"_s + bundle;
    const QString checkout = u"../checkout/tools/"_s + bundle;
    const QString beside = u"tools/"_s + bundle;
    // The first of each is the one to be opened.
    QTest::newRow("all") << QStringList{resources, checkout, beside};
    QTest::newRow("not-in-resources") << QStringList{checkout, beside};
    QTest::newRow("resources-only") << QStringList{resources};
    QTest::newRow("checkout-only") << QStringList{checkout};
    QTest::newRow("beside-program-only") << QStringList{beside};
}

void TestToolLauncher::vbfPhfBin_opens()
{
    QFETCH(QStringList, bundles);
    for (const QString &path : std::as_const(bundles)) {
        QVERIFY(QDir().mkpath(besideProgram(path)));
    }
    const QString expected = openError(canonical(besideProgram(bundles.first())));
    QString error;
    QCOMPARE(ToolLauncher::launchVbfPhfBin(&error), expected.isEmpty());
    // The path is absolute, but may go through "..".
    QCOMPARE(error.isEmpty() ? error : u"Failed to open "_s + canonical(error.mid(15)), expected);
    QCOMPARE(ToolLauncher::launchVbfPhfBin(), expected.isEmpty());
}

void TestToolLauncher::vbfPhfBin_cannotBeOpened()
{
    const QString path = besideProgram(u"tools/"_s + bundle);
    QVERIFY(QDir().mkpath(path));
    AppState state;
    QString error;
    {
        const NoDescriptors noDescriptors;
        QVERIFY(noDescriptors.set());
        QVERIFY(!ToolLauncher::launchVbfPhfBin(&error));
        QVERIFY(!ToolLauncher::launchVbfPhfBin());
        state.launchTool(u"vbfphf"_s);
    }
    QCOMPARE(error, u"Failed to open "_s + path);
    QCOMPARE(state.status(), error);
    QCOMPARE(state.statusOK(), 0);
}

void TestToolLauncher::findHelpPdf_order()
{
    QVERIFY(QDir().mkpath(inCheckout(u"tools"_s)));
    QCOMPARE(ToolLauncher::findHelpPdf(), QString());
    const QStringList lastToFirst{inCheckout(u"server/App_Data/manuals/"_s + manualName),
                                  inCheckout(u"Release/"_s + manualName), inCheckout(u"docs/"_s + manualName),
                                  besideProgram(u"docs/"_s + manualName), besideProgram(manualName)};
    for (const QString &path : lastToFirst) {
        makeFile(path, "%PDF");
        const QString found = ToolLauncher::findHelpPdf();
        QVERIFY(QDir::isAbsolutePath(found));
        QCOMPARE(canonical(found), canonical(path));
    }
}

void TestToolLauncher::launchHelpPdf()
{
    QString error = untouched;
    QVERIFY(!ToolLauncher::launchHelpPdf(&error));
    QCOMPARE(error, manualMissing);
    QVERIFY(!ToolLauncher::launchHelpPdf());
    QCOMPARE(m_desktop->opened.size(), 0);
    makeFile(besideProgram(u"docs/"_s + manualName), "%PDF");
    error = untouched;
    QVERIFY(ToolLauncher::launchHelpPdf(&error));
    QCOMPARE(error, untouched);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(besideProgram(u"docs/"_s + manualName))});
}

void TestToolLauncher::launchTool_reports_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("path");

    for (const Tool &tool : plainTools) {
        QTest::newRow(tool.key) << QString::fromLatin1(tool.key) << tool.candidates.first();
    }
}

void TestToolLauncher::launchTool_reports()
{
    QFETCH(QString, key);
    QFETCH(QString, path);
    QVERIFY(makeProgram(besideProgram(u"tools/"_s + path), report()));
    AppState state;
    QSignalSpy statuses(&state, &AppState::statusChanged);
    state.launchTool(key);
    QCOMPARE(state.status(), u"Launched %1."_s.arg(key));
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(statuses.count(), 1);
    WAIT_VERIFY(QFileInfo::exists(report()));
    QVERIFY(hasRun(besideProgram(u"tools/"_s + path)));
}

void TestToolLauncher::launchTool_missing_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("status");

    for (const Tool &tool : plainTools) {
        QTest::newRow(tool.key) << QString::fromLatin1(tool.key) << notFound;
    }
    QTest::newRow("vbfphf") << u"vbfphf"_s << u"VBF/PHF converter was not found."_s;
    QTest::newRow("help") << u"help"_s << manualMissing;
}

void TestToolLauncher::launchTool_missing()
{
    QFETCH(QString, key);
    AppState state;
    state.launchTool(key);
    QTEST(state.status(), "status");
    QCOMPARE(state.statusOK(), 0);
}

void TestToolLauncher::launchTool_silentFailure()
{
    makeFile(besideProgram(u"tools/efd_reader/EFD_Reader.exe"_s), "not a program");
    AppState state;
    state.setStatus(u"before"_s, 1);
    state.launchTool(u"efd"_s);
    QCOMPARE(state.status(), QString());
    QCOMPARE(state.statusOK(), 0);
}

void TestToolLauncher::launchTool_unknownKey_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("upper-case") << u"J1939"_s;
    QTest::newRow("blank-after") << u"j1939 "_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("other") << u"xcal"_s;
    QTest::newRow("path") << u"../j1939"_s;
}

void TestToolLauncher::launchTool_unknownKey()
{
    QFETCH(QString, key);
    QVERIFY(makeProgram(besideProgram(u"tools/j1939_dtc_converter/j1939_gui.exe"_s), report()));
    AppState state;
    state.setStatus(u"before"_s, 1);
    QSignalSpy statuses(&state, &AppState::statusChanged);
    state.launchTool(key);
    QCOMPARE(state.status(), QString());
    QCOMPARE(state.statusOK(), 0);
    QCOMPARE(statuses.count(), 1);
}

void TestToolLauncher::launchTool_help()
{
    makeFile(besideProgram(manualName), "%PDF");
    AppState state;
    state.launchTool(u"help"_s);
    QCOMPARE(state.status(), u"Launched help."_s);
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(besideProgram(manualName))});
}

void TestToolLauncher::goHelp()
{
    AppState state;
    state.goHelp();
    QCOMPARE(state.status(), manualMissing);
    QCOMPARE(state.statusOK(), 0);
    QCOMPARE(m_desktop->opened.size(), 0);
    makeFile(besideProgram(u"docs/"_s + manualName), "%PDF");
    state.goHelp();
    QCOMPARE(state.status(), u"Opened User Manual."_s);
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(besideProgram(u"docs/"_s + manualName))});
}

void TestToolLauncher::serviceUrl_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("url");

    QTest::newRow("page") << u"checksum-gui.html"_s << u"http://127.0.0.1:1/api/checksum-gui.html"_s;
    QTest::newRow("below") << u"xdf/login.aspx"_s << u"http://127.0.0.1:1/api/xdf/login.aspx"_s;
    QTest::newRow("empty") << QString() << u"http://127.0.0.1:1/api/"_s;
}

void TestToolLauncher::serviceUrl()
{
    QFETCH(QString, path);
    AppState state;
    state.findChild<VoxApiClient *>()->setApiBase(u"http://127.0.0.1:1/api/"_s);
    QString url;
    QVERIFY(
        QMetaObject::invokeMethod(&state, "serviceUrl", Q_RETURN_ARG(QString, url), Q_ARG(QString, path)));
    QTEST(url, "url");
}

void TestToolLauncher::checksumPageOpens()
{
    AppState state;
    state.findChild<VoxApiClient *>()->setApiBase(u"http://127.0.0.1:1/api/"_s);
    state.openWebTool(state.serviceUrl(u"checksum-gui.html"_s), u"Delco Checksum GUI"_s);
    QCOMPARE(state.status(), u"Opened Delco Checksum GUI."_s);
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl(u"http://127.0.0.1:1/api/checksum-gui.html"_s)});
}

void TestToolLauncher::webToolWindow_keepsLastTitle()
{
    WebToolWindow window;
    QVERIFY(!window.parent());
    window.openUrl(u"https://x.example/a"_s, u"First"_s);
    window.openUrl(u"https://x.example/b c"_s, u"Second"_s);
    QCOMPARE(window.windowTitle(), u"Second"_s);
    QVERIFY(!window.isVisible());
    QCOMPARE(m_desktop->opened.size(), 2);
    // The two events that a web view would follow do no harm while there is none.
    window.resize(300, 200);
    window.show();
    QVERIFY(window.isVisible());
    QCOMPARE(m_desktop->opened.size(), 2);
}

int main(int argc, char **argv)
{
    // The system's opener for bundles must find no desktop and no browser.
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"}) {
        qunsetenv(variable);
    }
    qputenv("BROWSER", "true");
    if (argc == 2 && QLatin1StringView(argv[1]) == launchAndEnd) {
        const QCoreApplication application(argc, argv);
        return ToolLauncher::launchJ1939() ? 0 : 1;
    }
    return runTestProgram<TestToolLauncher>(argc, argv);
}
#include "tst_ToolLauncher.moc"
