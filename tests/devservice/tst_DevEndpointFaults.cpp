#include "DevService.h"
#include "Exchange.h"
#include "Faults.h"
#include "support/TestMain.h"

#include <QScopeGuard>
#include <QTcpSocket>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *postEndpoints[] = {
    "kvt_worker/process.aspx", "xdf/login.aspx",       "xdf/catalog.aspx",
    "xdf/download.aspx",       "patches/patches.aspx", "patches/patch_process.aspx",
    "stock/list.aspx",         "stock/download.aspx",  "feedback.aspx",
    "feedback_reply.aspx",     "upload.aspx"};
constexpr const char *getEndpoint = "updates/kvteditornew/update.json";

QString withArguments(const FaultKind &kind)
{
    return kind.name == "status"_L1 ? u"status:503:html"_s : QString(kind.name);
}

} // namespace

/// Each fault, told to each endpoint alone: that endpoint breaks as told, counts its request once, and works
/// again afterwards; its neighbours work all the time.
class TestDevEndpointFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void breaksAsTold_data();
    void breaksAsTold();

private:
    QByteArray pathOf(const QString &endpoint) const { return "/api/" + endpoint.toLatin1(); }
    RawOutcome ask(const QString &endpoint) const;
    void checkHeld(const QString &endpoint);
    void checkEndless(const QString &endpoint);
    void checkBroken(const QString &fault, const QByteArray &ordinary, const RawOutcome &outcome);

    std::unique_ptr<DevService> m_service;
};

void TestDevEndpointFaults::initTestCase()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevEndpointFaults::cleanupTestCase()
{
    m_service.reset();
}

RawOutcome TestDevEndpointFaults::ask(const QString &endpoint) const
{
    return endpoint == QLatin1StringView(getEndpoint) ? rawGet(*m_service, pathOf(endpoint))
                                                      : rawPost(*m_service, pathOf(endpoint), "{}");
}

void TestDevEndpointFaults::cleanup()
{
    m_service->clearFaults();
    m_service->release();
}

void TestDevEndpointFaults::breaksAsTold_data()
{
    QTest::addColumn<QString>("endpoint");
    QTest::addColumn<QString>("fault");

    QStringList endpoints{QString::fromLatin1(getEndpoint)};
    for (const char *const endpoint : postEndpoints)
        endpoints.append(QString::fromLatin1(endpoint));
    for (const FaultKind &kind : faultKinds()) {
        // Takes a second to make, and is looked at elsewhere.
        if (kind.name == "gzip-bomb"_L1)
            continue;
        for (const QString &endpoint : std::as_const(endpoints))
            QTest::addRow("%s-%s", kind.name.data(), qPrintable(endpoint)) << endpoint << withArguments(kind);
    }
}

void TestDevEndpointFaults::breaksAsTold()
{
    QFETCH(QString, endpoint);
    QFETCH(QString, fault);
    const QByteArray ordinary = ask(endpoint).bytes;
    QVERIFY(ordinary.startsWith("HTTP/1.1 "));
    QVERIFY(!ordinary.contains("No such endpoint"));
    const int before = m_service->requestCount(endpoint);
    QVERIFY(m_service->setFault(endpoint, fault));
    int asked = 1;
    if (fault == "refuse"_L1) {
        QVERIFY(ask(endpoint).refused);
        asked = 0;
    } else if (fault == "hold"_L1) {
        checkHeld(endpoint);
    } else if (fault == "endless-body"_L1) {
        checkEndless(endpoint);
    } else {
        checkBroken(fault, ordinary, ask(endpoint));
    }
    QCOMPARE(m_service->requestCount(endpoint), before + asked);
    const QString neighbour = endpoint == "feedback.aspx"_L1 ? u"stock/list.aspx"_s : u"feedback.aspx"_s;
    QCOMPARE(ask(neighbour).refused, fault == "refuse"_L1);
    m_service->clearFaults();
    QCOMPARE(ask(endpoint).bytes.left(12), ordinary.left(12));
}

// What goes over the wire for each kind is written out in the tests of the faults themselves.
void TestDevEndpointFaults::checkBroken(const QString &fault, const QByteArray &ordinary,
                                        const RawOutcome &outcome)
{
    const FaultKind &kind = *findFault(fault);
    QVERIFY(!outcome.refused);
    if (kind.phase == FaultKind::Phase::BeforeBody) {
        QCOMPARE(outcome.bytes, QByteArray());
    } else if (kind.phase == FaultKind::Phase::Bent) {
        QCOMPARE(outcome.bytes == ordinary, fault == "slow"_L1);
        QVERIFY(ordinary.startsWith(outcome.bytes) || outcome.bytes.startsWith(ordinary));
        QVERIFY(!outcome.bytes.isEmpty());
    } else if (fault.startsWith("redirect"_L1)) {
        QVERIFY(outcome.bytes.contains("\r\nLocation: http://127.0.0.1"));
    } else {
        const FaultScript script = kind.script({ordinary, {}, {}, fault.split(u':').sliced(1)});
        QVERIFY(outcome.bytes.startsWith(script.bytes));
        QCOMPARE(outcome.bytes.size(), script.bytes.size() + script.fillerSize + script.tail.size());
    }
}

void TestDevEndpointFaults::checkHeld(const QString &endpoint)
{
    RawOutcome outcome;
    {
        std::thread asking([&] { outcome = ask(endpoint); });
        const auto answered = qScopeGuard([&] {
            m_service->release();
            asking.join();
        });
        QTRY_COMPARE_WITH_TIMEOUT(m_service->heldCount(), 1, 60'000);
    }
    QVERIFY(outcome.bytes.startsWith("HTTP/1.1 "));
}

void TestDevEndpointFaults::checkEndless(const QString &endpoint)
{
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, m_service->port());
    const bool isGet = endpoint == QLatin1StringView(getEndpoint);
    client.write((isGet ? "GET " : "POST ") + pathOf(endpoint)
                 + " HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
    QTRY_VERIFY(client.bytesAvailable() > 1'000'000);
    client.abort();
}

KVTEDITOR_TEST_MAIN(TestDevEndpointFaults)
#include "tst_DevEndpointFaults.moc"
