// Early destruction: the controller, the client and the window's engine are destroyed after none, one, two
// and more events of the thread's event loop, until their work is done.
//
// With many requests in flight there are hundreds of events, and an ordinary run tries a sample of them.
// KVTEDITOR_LIFE_STEP=1 tries them all, which takes minutes; a larger number is the step between two tries.

#include "EndpointFixture.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QEventLoop>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60'000;
constexpr int everything = -1;
constexpr int scanOnly = -2;
constexpr int treeFiles = 300;

void nothing() { }

int stepOr(int usual)
{
    const int wanted = qEnvironmentVariableIntValue("KVTEDITOR_LIFE_STEP");
    return wanted > 0 ? wanted : usual;
}

/// The application, whose loop can be stopped to do something between one event and the next.
class CountingApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (QThread::currentThread() != thread())
            return QApplication::notify(receiver, event);
        ++m_depth;
        const bool result = QApplication::notify(receiver, event);
        // What one event sends on is part of it.
        if (--m_depth == 0 && m_afterEvent)
            m_afterEvent();
        return result;
    }

    /// Runs the loop for that many events, and then at once the action; other events that are due follow it.
    /// False, without the action, when the work is done before.
    bool runThen(int events, const std::function<void()> &action, const std::function<bool()> &isOver)
    {
        if (events == 0) {
            action();
            return true;
        }
        if (isOver())
            return false;
        QEventLoop loop;
        QTimer::singleShot(patience, &loop, &QEventLoop::quit);
        int left = events;
        bool stopped = false;
        m_afterEvent = [&] {
            if (stopped)
                return;
            stopped = --left == 0 || isOver();
            if (left == 0)
                action();
            if (stopped)
                loop.quit();
        };
        loop.exec();
        m_afterEvent = {};
        return left == 0;
    }

private:
    int m_depth = 0;
    std::function<void()> m_afterEvent;
};

/// Counts what objects announce.
class Announcements : public QObject
{
    Q_OBJECT

public:
    int count = 0;

    /// Every signal of the object but those that all have.
    void listenTo(const QObject *object)
    {
        const QMetaObject *const meta = object->metaObject();
        for (int i = QObject::staticMetaObject.methodCount(); i < meta->methodCount(); ++i) {
            if (meta->method(i).methodType() == QMetaMethod::Signal)
                listenTo(object, meta->method(i), {});
        }
    }

    /// This signal alone; the action follows it.
    void listenTo(const QObject *object, const QMetaMethod &signal, const std::function<void()> &action)
    {
        m_action = action;
        connect(object, signal, this, metaObject()->method(metaObject()->indexOfSlot("add()")));
    }

private slots:
    void add()
    {
        ++count;
        if (m_action)
            m_action();
    }

private:
    std::function<void()> m_action;
};

qsizetype entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

qsizetype threads()
{
    return entriesOf(u"/proc/self/task"_s);
}

qsizetype openFiles()
{
    return entriesOf(u"/proc/self/fd"_s);
}

// Each calls back with any outcome.
struct ClientCall
{
    const char *name;
    void (*send)(VoxApiClient &client, const std::function<void()> &done);
};

JsonCallback json(const std::function<void()> &done)
{
    return [done](const QJsonObject &, const QString &) { done(); };
}

BytesCallback bytes(const std::function<void()> &done)
{
    return [done](const QByteArray &, const QJsonObject &, const QString &) { done(); };
}

WorkerCallback worker(const std::function<void()> &done)
{
    return [done](const WorkerResult &) { done(); };
}

QList<WorkerFile> fileOf(int size)
{
    return {{u"file"_s, u"f.kvt"_s, QByteArray(size, 'x')}};
}

constexpr ClientCall clientCalls[] = {
    {"postJson", [](VoxApiClient &client, const auto &done) { client.postJson(u"x"_s, {}, json(done)); }},
    {"getJson", [](VoxApiClient &client, const auto &done) { client.getJson(u"x"_s, json(done)); }},
    {"postMultipart",
     [](VoxApiClient &client, const auto &done) {
         client.postMultipart(u"x"_s, {{u"a"_s, 1}}, fileOf(5), bytes(done));
     }},
    {"downloadFile",
     [](VoxApiClient &client, const auto &done) { client.downloadFile(client.url(u"x"_s), bytes(done)); }},
    {"kvtWorker",
     [](VoxApiClient &client, const auto &done) {
         client.kvtWorker(u"4.0.2"_s, u"op"_s, {}, fileOf(5), worker(done));
     }},
    {"kvtWorker-large",
     [](VoxApiClient &client, const auto &done) {
         client.kvtWorker(u"4.0.2"_s, u"op"_s, {}, fileOf(1'000'000), worker(done));
     }},
    {"kvtWorker-refused",
     [](VoxApiClient &client, const auto &done) {
         client.kvtWorker(u"4.0.2"_s, u"op"_s, {}, {}, worker(done));
     }},
    {"uploadToDev", [](VoxApiClient &client, const auto &done) { client.uploadToDev({}, bytes(done)); }},
    {"xdfLogin", [](VoxApiClient &client, const auto &done) { client.xdfLogin(u"a"_s, u"b"_s, json(done)); }},
    {"xdfCatalog",
     [](VoxApiClient &client, const auto &done) { client.xdfCatalog(u"a"_s, u"b"_s, json(done)); }},
    {"xdfDownload",
     [](VoxApiClient &client, const auto &done) { client.xdfDownload(u"a"_s, u"b"_s, bytes(done)); }},
    {"patches", [](VoxApiClient &client, const auto &done) { client.patches(u"a"_s, u"b"_s, json(done)); }},
    {"applyPatch",
     [](VoxApiClient &client, const auto &done) { client.applyPatch(u"a"_s, 1, "BIN", u"b"_s, json(done)); }},
    {"stockList", [](VoxApiClient &client, const auto &done) { client.stockList({}, json(done)); }},
    {"stockDownload",
     [](VoxApiClient &client, const auto &done) { client.stockDownload(u"1"_s, bytes(done)); }},
    {"feedbackSubmit", [](VoxApiClient &client, const auto &done) { client.feedbackSubmit({}, json(done)); }},
    {"feedbackHistory",
     [](VoxApiClient &client, const auto &done) { client.feedbackHistory(u"1"_s, json(done)); }},
    {"feedbackReply",
     [](VoxApiClient &client, const auto &done) { client.feedbackReply(u"1"_s, u"a"_s, json(done)); }},
    {"checkUpdate", [](VoxApiClient &client, const auto &done) { client.checkUpdate(json(done)); }},
};

// The controller's signals, and a call that makes it emit each of them without an answer of the service.
struct Announced
{
    const char *signal;
    void (*make)(AppState &state);
};

constexpr Announced announced[] = {
    {"tabChanged", [](AppState &state) { state.setTab(u"xdf"_s); }},
    {"busyChanged", [](AppState &) {}},
    {"statusChanged", [](AppState &) {}},
    {"fileChanged", [](AppState &) {}},
    {"identifiersChanged", [](AppState &state) { state.setVin(u"NEWVIN"_s); }},
    {"showHexChanged", [](AppState &state) { state.setShowHex(!state.showHex()); }},
    {"xdfChanged", [](AppState &state) { state.setXdfEmail(u"new"_s); }},
    {"searchChanged", [](AppState &state) { state.setSearchRecursive(u"0"_s); }},
    {"segmentsChanged", [](AppState &state) { state.setCandidateSelected(0, true); }},
    {"patcherChanged", [](AppState &) {}},
    {"stockChanged", [](AppState &state) { state.clearStock(); }},
    {"toolsChanged", [](AppState &state) { state.setXcalMode(u"flat"_s); }},
    {"feedbackChanged", [](AppState &) {}},
};

} // namespace

class TestLife : public QObject
{
    Q_OBJECT

public:
    TestLife(CountingApplication *application, const UrlRecorder *desktop)
        : m_loop(application)
        , m_desktop(desktop)
    {
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void controllerDestroyedAfterEachEvent_data();
    void controllerDestroyedAfterEachEvent();
    void clientDestroyedAfterEachEvent_data();
    void clientDestroyedAfterEachEvent();
    void clientDestroyedInItsCallback_data();
    void clientDestroyedInItsCallback();
    void clientLeavesWhenItSends_data();
    void clientLeavesWhenItSends();
    void everyAnnouncementIsListed();
    void controllerLeavesAtAnAnnouncement_data();
    void controllerLeavesAtAnAnnouncement();
    void operationStartedTwiceAtOnce_data();
    void operationStartedTwiceAtOnce();
    void engineDestroyedAfterAnEvent_data();
    void engineDestroyedAfterAnEvent();

private:
    /// Starts one operation, or a scan, or everything at once.
    void start(EndpointFixture &fixture, int work);
    static bool isOver(const AppState &state);
    /// Whether a client made now gets its answer; while it waits the loop turns.
    bool nextClientIsAnswered();
    /// A controller in use with `m_server`, whose requests are counted.
    std::unique_ptr<EndpointFixture> newFixture();

    CountingApplication *m_loop;
    const UrlRecorder *m_desktop;
    QTemporaryDir m_tree;
    std::unique_ptr<RawHttpServer> m_server;
    int m_sent = 0;
};

void TestLife::initTestCase()
{
    QQuickStyle::setStyle(u"Basic"_s);
    qmlRegisterType<HexModel>("KvtEditor", 1, 0, "HexModel");
    for (int i = 0; i < treeFiles; ++i) {
        makeFile(m_tree.filePath(u"e38_%1.kvt"_s.arg(i)));
    }
}

void TestLife::init()
{
    // Any but the client's own about a file that came with an error.
    QTest::failOnWarning(QRegularExpression(u"^(?!An answer of )"_s));
    m_server = std::make_unique<RawHttpServer>();
    m_server->answerAlways(answerWith(R"({"status":"ok"})"));
    m_sent = 0;
}

void TestLife::cleanup()
{
    m_server.reset();
}

void TestLife::start(EndpointFixture &fixture, int work)
{
    const auto operations = endpointOperations();
    if (work >= 0)
        fixture.start(operations[static_cast<std::size_t>(work)]);
    if (work == everything) {
        for (const EndpointOperation &operation : operations)
            fixture.start(operation);
    }
    if (work < 0)
        fixture.state().scanFolder(m_tree.path(), true, {}, {}, {}, {});
}

bool TestLife::isOver(const AppState &state)
{
    return !state.searchBusy() && !state.findChild<QNetworkAccessManager *>();
}

bool TestLife::nextClientIsAnswered()
{
    VoxApiClient next;
    next.setApiBase(m_server->baseUrl());
    ++m_sent;
    bool answered = false;
    next.getJson(u"next"_s, json([&answered] { answered = true; }));
    return waitUntil([&answered] { return answered; });
}

std::unique_ptr<EndpointFixture> TestLife::newFixture()
{
    auto fixture = std::make_unique<EndpointFixture>();
    if (!fixture->fill())
        return nullptr;
    fixture->setApiBase(m_server->baseUrl());
    connect(fixture->state().findChild<VoxApiClient *>(), &VoxApiClient::requestSent, this,
            [this] { ++m_sent; });
    return fixture;
}

void TestLife::controllerDestroyedAfterEachEvent_data()
{
    QTest::addColumn<int>("work");
    QTest::addColumn<int>("step");

    const auto operations = endpointOperations();
    for (std::size_t i = 0; i < operations.size(); ++i)
        QTest::newRow(operations[i].name) << static_cast<int>(i) << stepOr(2);
    QTest::newRow("scan") << scanOnly << 1;
    QTest::newRow("everything") << everything << stepOr(29);
}

void TestLife::controllerDestroyedAfterEachEvent()
{
    QFETCH(int, work);
    QFETCH(int, step);
    if (work >= 0)
        m_server->answerAlways(answerWith(endpointOperations()[static_cast<std::size_t>(work)].goodAnswer));
    std::unique_ptr<EndpointFixture> fixture = newFixture();
    QVERIFY(fixture);
    qsizetype threadsAtFirst = 0;
    qsizetype openFilesAtFirst = 0;
    int lives = 0;
    for (int events = 0;; events += step, ++lives) {
        Announcements heard;
        for (const QObject *const object :
             {static_cast<const QObject *>(&fixture->state()),
              static_cast<const QObject *>(fixture->state().hexModel()),
              static_cast<const QObject *>(fixture->state().findChild<VoxApiClient *>())})
            heard.listenTo(object);
        start(*fixture, work);
        QMap<QString, QByteArray> files;
        qsizetype opened = 0;
        int heardThen = 0;
        const auto destroy = [&] {
            heardThen = heard.count;
            fixture->destroyController();
            files = filesOnDisk();
            opened = m_desktop->opened.size();
        };
        const auto over = [&] { return isOver(fixture->state()); };
        if (!m_loop->runThen(events, destroy, over)) {
            QVERIFY(over());
            break;
        }
        // The next one works, and while it does nothing is heard of the one before.
        std::unique_ptr<EndpointFixture> next = newFixture();
        QVERIFY(next);
        QCOMPARE(heard.count, heardThen);
        QCOMPARE(filesOnDisk(), files);
        QCOMPARE(m_desktop->opened.size(), opened);
        QVERIFY(m_server->requestCount() <= m_sent);
        if (events == 0) {
            threadsAtFirst = threads();
            openFilesAtFirst = openFiles();
        }
        fixture = std::move(next);
    }
    if (work >= 0) {
        QCOMPARE(fixture->state().status(),
                 QString::fromUtf8(endpointOperations()[static_cast<std::size_t>(work)].goodStatus));
    }
    QVERIFY(!fixture->state().busy());
    QVERIFY2(lives >= 2, qPrintable(QString::number(lives)));
    fixture.reset();
    WAIT_VERIFY(threads() <= threadsAtFirst);
    WAIT_VERIFY(openFiles() <= openFilesAtFirst);
}

void TestLife::clientDestroyedAfterEachEvent_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("step");

    for (int i = 0; i < static_cast<int>(std::size(clientCalls)); ++i) {
        const bool isLong = std::string_view(clientCalls[i].name).ends_with("-large");
        QTest::newRow(clientCalls[i].name) << i << stepOr(isLong ? 7 : 1);
    }
    QTest::newRow("everything") << everything << stepOr(7);
}

void TestLife::clientDestroyedAfterEachEvent()
{
    QFETCH(int, call);
    QFETCH(int, step);
    int lives = 0;
    for (int events = 0;; events += step, ++lives) {
        auto client = std::make_unique<VoxApiClient>();
        client->setApiBase(m_server->baseUrl());
        connect(client.get(), &VoxApiClient::requestSent, this, [this] { ++m_sent; });
        int calls = 0;
        int callsThen = 0;
        for (int i = 0; i < static_cast<int>(std::size(clientCalls)); ++i) {
            if (i == call || call == everything)
                clientCalls[i].send(*client, [&calls] { ++calls; });
        }
        const auto destroy = [&] {
            callsThen = calls;
            client.reset();
        };
        const auto over = [&] { return !client->findChild<QNetworkAccessManager *>(); };
        if (!m_loop->runThen(events, destroy, over)) {
            QVERIFY(over());
            QCOMPARE(calls, call == everything ? static_cast<int>(std::size(clientCalls)) : 1);
            break;
        }
        QVERIFY(nextClientIsAnswered());
        QCOMPARE(calls, callsThen);
        QVERIFY(m_server->requestCount() <= m_sent);
    }
    QVERIFY(lives >= 1);
}

void TestLife::clientDestroyedInItsCallback_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<RawAnswer>("answer");

    const std::pair<const char *, RawAnswer> answers[] = {
        {"answered", answerWith(R"({"status":"ok"})")},
        {"refused", {httpAnswer(500, "<html>")}},
        {"cut", {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"status\""}},
        {"reset", {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{", RawAnswer::Ending::Reset}},
        {"garbage", {"no HTTP at all\r\n\r\n"}},
    };
    for (int i = 0; i < static_cast<int>(std::size(clientCalls)); ++i) {
        for (const auto &[how, answer] : answers)
            QTest::addRow("%s-%s", clientCalls[i].name, how) << i << answer;
    }
}

// The client says that this is allowed, with others of its requests under way.
void TestLife::clientDestroyedInItsCallback()
{
    QFETCH(int, call);
    QFETCH(RawAnswer, answer);
    auto client = std::make_unique<VoxApiClient>();
    client->setApiBase(m_server->baseUrl());
    m_server->answerNext(holdRequest());
    int otherCalls = 0;
    client->postJson(u"other"_s, {}, json([&otherCalls] { ++otherCalls; }));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    m_server->answerAlways(answer);
    int calls = 0;
    clientCalls[call].send(*client, [&] {
        ++calls;
        client.reset();
    });
    WAIT_COMPARE(calls, 1);
    QVERIFY(!client);
    m_server->answerHeld(0, answerWith("{}"));

    m_server->answerAlways(answerWith("{}"));
    QVERIFY(nextClientIsAnswered());
    QCOMPARE(calls, 1);
    QCOMPARE(otherCalls, 0);
}

void TestLife::clientLeavesWhenItSends_data()
{
    QTest::addColumn<int>("call");

    for (int i = 0; i < static_cast<int>(std::size(clientCalls)); ++i) {
        if (std::string_view(clientCalls[i].name) != "kvtWorker-refused")
            QTest::newRow(clientCalls[i].name) << i;
    }
}

void TestLife::clientLeavesWhenItSends()
{
    QFETCH(int, call);
    auto *const client = new VoxApiClient;
    client->setApiBase(m_server->baseUrl());
    int calls = 0;
    connect(client, &VoxApiClient::requestSent, client, &QObject::deleteLater);
    QSignalSpy gone(client, &QObject::destroyed);
    clientCalls[call].send(*client, [&calls] { ++calls; });
    QVERIFY(gone.wait(patience));
    const int callsThen = calls;
    QVERIFY(nextClientIsAnswered());
    QCOMPARE(calls, callsThen);
}

void TestLife::everyAnnouncementIsListed()
{
    QStringList listed;
    for (const Announced &entry : announced)
        listed.append(QLatin1StringView(entry.signal));
    QStringList there;
    const QMetaObject &meta = AppState::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QString name = QString::fromLatin1(meta.property(i).notifySignal().name());
        if (!name.isEmpty() && !there.contains(name))
            there.append(name);
    }
    listed.sort();
    there.sort();
    QCOMPARE(there, listed);
}

void TestLife::controllerLeavesAtAnAnnouncement_data()
{
    QTest::addColumn<int>("index");

    for (int i = 0; i < static_cast<int>(std::size(announced)); ++i)
        QTest::newRow(announced[i].signal) << i;
}

// At the first time that the signal comes, at the second, and so on, with everything in flight.
void TestLife::controllerLeavesAtAnAnnouncement()
{
    QFETCH(int, index);
    const QByteArray signature = QByteArray(announced[index].signal) + "()";
    const QMetaMethod signal =
        AppState::staticMetaObject.method(AppState::staticMetaObject.indexOfSignal(signature));
    int lives = 0;
    for (int times = 1;; times += stepOr(3), ++lives) {
        const std::unique_ptr<EndpointFixture> fixture = newFixture();
        QVERIFY(fixture);
        const QPointer<AppState> state(&fixture->state());
        Announcements heard;
        heard.listenTo(state, signal, [&] {
            if (heard.count == times)
                state->deleteLater();
        });
        start(*fixture, everything);
        announced[index].make(*state);
        const auto over = [&] { return !state || isOver(*state); };
        fixture->releaseController();
        m_loop->runThen(std::numeric_limits<int>::max(), nothing, over);
        if (heard.count < times) {
            QVERIFY(state && isOver(*state));
            delete state;
            break;
        }
        WAIT_VERIFY(!state);
        const int heardThen = heard.count;
        const QMap<QString, QByteArray> files = filesOnDisk();
        QVERIFY(nextClientIsAnswered());
        QCOMPARE(heard.count, heardThen);
        QCOMPARE(filesOnDisk(), files);
    }
    QVERIFY(lives >= 1);
}

void TestLife::operationStartedTwiceAtOnce_data()
{
    QTest::addColumn<int>("index");

    const auto operations = endpointOperations();
    for (std::size_t i = 0; i < operations.size(); ++i)
        QTest::newRow(operations[i].name) << static_cast<int>(i);
}

// Only the views keep a double click from asking twice.
void TestLife::operationStartedTwiceAtOnce()
{
    QFETCH(int, index);
    const EndpointOperation &operation = endpointOperations()[static_cast<std::size_t>(index)];
    m_server->answerAlways(answerWith(operation.goodAnswer));
    const std::unique_ptr<EndpointFixture> fixture = newFixture();
    QVERIFY(fixture);
    fixture->start(operation);
    fixture->start(operation);
    QVERIFY(fixture->settle());
    QCOMPARE(fixture->state().status(), QString::fromUtf8(operation.goodStatus));
    QCOMPARE(fixture->state().statusOK(), 1);
    QVERIFY(!fixture->state().busy());
    QCOMPARE(m_server->requestCount(), 2 * operation.goodRequests);
    QCOMPARE(filesOnDisk().size(), *operation.savedName == '\0' ? 0 : 1);
}

void TestLife::engineDestroyedAfterAnEvent_data()
{
    QTest::addColumn<int>("events");

    for (const int events : {0, 1, 2, 5, 10, 20, 50, 100, 200, 400})
        QTest::addRow("%d", events) << events;
}

// As at the end of the program: the window goes first, and the controller does its work on its own.
void TestLife::engineDestroyedAfterAnEvent()
{
    QFETCH(int, events);
    const std::unique_ptr<EndpointFixture> fixture = newFixture();
    QVERIFY(fixture);
    auto engine = std::make_unique<QQmlApplicationEngine>();
    engine->rootContext()->setContextProperty(u"app"_s, &fixture->state());
    engine->addImportPath(u"qrc:/qt/qml"_s);
    engine->loadData("import KvtEditor\nRootView {}\n");
    QCOMPARE(engine->rootObjects().size(), 1);
    const auto over = [&] { return isOver(fixture->state()); };
    start(*fixture, everything);
    // Not from within an event: a window does not bear that.
    m_loop->runThen(events, nothing, over);
    engine.reset();
    WAIT_VERIFY(over());
    QVERIFY(!fixture->state().busy());
    QVERIFY(m_server->requestCount() >= static_cast<int>(endpointOperations().size()));
}

int main(int argc, char **argv)
{
    const TestEnvironment environment;
    qputenv("QT_QUICK_BACKEND", "software");
    CountingApplication application(argc, argv);
    const UrlRecorder desktop;
    TestLife test(&application, &desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Life.moc"
