#include "platform/Graphics.h"
#include "support/TestMain.h"

#include <QGuiApplication>
#include <QHostAddress>
#include <QLocalSocket>
#include <QProcess>
#include <QSGRendererInterface>
#include <QSet>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 120000;
constexpr int firstTcpPort = 6000;

const QSet<QByteArray> waysToACard{"DRI3", "DRI2", "NV-GLX"};

/// The extensions of this test's display.
QSet<QByteArray> extensions()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> display(xcb_connect(nullptr, nullptr),
                                                                               &xcb_disconnect);
    const std::unique_ptr<xcb_list_extensions_reply_t, decltype(&std::free)> reply(
        xcb_list_extensions_reply(display.get(), xcb_list_extensions(display.get()), nullptr), &std::free);
    QSet<QByteArray> names;
    if (!reply)
        return names;
    for (auto name = xcb_list_extensions_names_iterator(reply.get()); name.rem > 0; xcb_str_next(&name))
        names.insert(QByteArray(xcb_str_name(name.data), xcb_str_name_length(name.data)));
    return names;
}

/// The test's display under an address of its own, by which it answers for one extension when it is asked for
/// another.
class DisguisedDisplay
{
public:
    DisguisedDisplay(const QByteArray &asked, const QByteArray &answered)
        : m_asked(asked)
        , m_answered(answered)
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { takeClient(); });
        m_isListening = m_server.listen(QHostAddress::LocalHost);
    }

    bool isListening() const { return m_isListening && m_server.serverPort() >= firstTcpPort; }
    QString name() const { return u"127.0.0.1:%1"_s.arg(m_server.serverPort() - firstTcpPort); }

private:
    void takeClient()
    {
        QTcpSocket *const client = m_server.nextPendingConnection();
        client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        auto *const display = new QLocalSocket(client);
        QString number = qEnvironmentVariable("DISPLAY");
        display->connectToServer(u"/tmp/.X11-unix/X"_s + number.remove(u':'));
        QObject::connect(client, &QTcpSocket::readyRead, display, [this, client, display] {
            display->write(client->readAll().replace(m_asked, m_answered));
        });
        QObject::connect(display, &QLocalSocket::readyRead, client,
                         [client, display] { client->write(display->readAll()); });
        QObject::connect(display, &QLocalSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
        QObject::connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }

    QTcpServer m_server;
    const QByteArray m_asked;
    const QByteArray m_answered;
    bool m_isListening = false;
};

/// What this program does as a process of its own, for which the platform can be chosen.
int answer(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    std::printf("%s: %s\n", qPrintable(QGuiApplication::platformName()),
                hasNoGraphicsCard() ? "no card" : "not known");
    return 0;
}

} // namespace

/// Whether the window is drawn without OpenGL where that would be emulated, and only there. Runs on an X
/// display.
class TestDrawing : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void cardIsMissedWhereTheDisplayHasNoWayToIt();
    void cardIsNotMissedWhereTheDisplayHasAWay_data();
    void cardIsNotMissedWhereTheDisplayHasAWay();
    void cardIsNotMissedWithoutADisplay();
    void windowIsDrawnAsTheDisplayAsks();
    void windowIsDrawnByACardInReach();
    void choiceOfTheUserIsKept_data();
    void choiceOfTheUserIsKept();

private:
    void ignoreDriver();
    QString output(const QString &program, const QStringList &arguments = {}) const;
    QString ask() const { return output(QCoreApplication::applicationFilePath(), {u"ask"_s}); }
    /// How the real program's window is drawn.
    QString drawing() const { return output(QStringLiteral(KVTEDITOR_WATCHED_PROGRAM)); }

    QProcessEnvironment m_environment;
};

void TestDrawing::init()
{
    QVERIFY(qEnvironmentVariable("DISPLAY").startsWith(u':'));
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    m_environment.insert(u"KVTEDITOR_WATCH"_s, u"drawing"_s);
    for (const QString &choice : {u"QT_QUICK_BACKEND"_s, u"QSG_RHI_BACKEND"_s})
        m_environment.remove(choice);
}

QString TestDrawing::output(const QString &program, const QStringList &arguments) const
{
    // Waited for by the event loop, in which the disguised display works meanwhile.
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QSignalSpy finished(&process, &QProcess::finished);
    process.start(program, arguments);
    if (process.state() != QProcess::NotRunning && !finished.wait(patience))
        process.kill();
    process.waitForFinished();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return u"ended with %1"_s.arg(process.exitCode());
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

// What a graphics driver leaks, and how its threads share memory, is not the program's.
void TestDrawing::ignoreDriver()
{
    m_environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    m_environment.insert(u"TSAN_OPTIONS"_s, u"report_bugs=0"_s);
}

void TestDrawing::cardIsMissedWhereTheDisplayHasNoWayToIt()
{
    QCOMPARE(ask(), extensions().intersects(waysToACard) ? u"xcb: not known"_s : u"xcb: no card"_s);
}

void TestDrawing::cardIsNotMissedWhereTheDisplayHasAWay_data()
{
    QTest::addColumn<QByteArray>("way");
    QTest::addColumn<QByteArray>("extensionOfThatLength");
    QTest::newRow("DRI3") << QByteArray("DRI3") << QByteArray("SYNC");
    QTest::newRow("DRI2") << QByteArray("DRI2") << QByteArray("SYNC");
    QTest::newRow("NV-GLX") << QByteArray("NV-GLX") << QByteArray("RENDER");
}

void TestDrawing::cardIsNotMissedWhereTheDisplayHasAWay()
{
    QFETCH(QByteArray, way);
    QFETCH(QByteArray, extensionOfThatLength);
    QVERIFY(extensions().contains(extensionOfThatLength));
    const DisguisedDisplay display(way, extensionOfThatLength);
    QVERIFY(display.isListening());
    m_environment.insert(u"DISPLAY"_s, display.name());
    // Nothing but the question is to meet the disguise.
    m_environment.insert(u"QT_XCB_GL_INTEGRATION"_s, u"none"_s);
    QCOMPARE(ask(), u"xcb: not known"_s);
}

void TestDrawing::cardIsNotMissedWithoutADisplay()
{
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    QCOMPARE(ask(), u"offscreen: not known"_s);
}

void TestDrawing::windowIsDrawnAsTheDisplayAsks()
{
    const bool mayHaveCard = extensions().intersects(waysToACard);
    const auto expected = mayHaveCard ? QSGRendererInterface::OpenGL : QSGRendererInterface::Software;
    QCOMPARE(drawing(), u"drawn: %1"_s.arg(expected));
}

void TestDrawing::windowIsDrawnByACardInReach()
{
    // The open drivers, of which one draws here, never ask for this one.
    const DisguisedDisplay display("NV-GLX", "RENDER");
    QVERIFY(display.isListening());
    m_environment.insert(u"DISPLAY"_s, display.name());
    ignoreDriver();
    QCOMPARE(drawing(), u"drawn: %1"_s.arg(QSGRendererInterface::OpenGL));
}

void TestDrawing::choiceOfTheUserIsKept_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("interface-opengl")
        << u"QSG_RHI_BACKEND"_s << u"opengl"_s << int(QSGRendererInterface::OpenGL);
    QTest::newRow("interface-none") << u"QSG_RHI_BACKEND"_s << u"null"_s << int(QSGRendererInterface::Null);
    QTest::newRow("backend-rhi") << u"QT_QUICK_BACKEND"_s << u"rhi"_s << int(QSGRendererInterface::OpenGL);
    QTest::newRow("backend-software")
        << u"QT_QUICK_BACKEND"_s << u"software"_s << int(QSGRendererInterface::Software);
}

void TestDrawing::choiceOfTheUserIsKept()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QFETCH(int, expected);
    m_environment.insert(variable, value);
    if (expected != QSGRendererInterface::Software)
        ignoreDriver();
    QCOMPARE(drawing(), u"drawn: %1"_s.arg(expected));
}

int main(int argc, char **argv)
{
    using namespace std::string_view_literals;
    return argc == 2 && argv[1] == "ask"sv ? answer(argc, argv) : runTestProgram<TestDrawing>(argc, argv);
}

#include "tst_Drawing.moc"
