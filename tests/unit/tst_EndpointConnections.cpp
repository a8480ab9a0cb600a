#include "DevService.h"
#include "EndpointTest.h"
#include "support/Waiting.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int bigBody = 20'000'000;
/// What a good answer's status line counts.
constexpr int smallBody = 5;

QString certificate(const QString &name)
{
    return QStringLiteral(KVTEDITOR_CERTIFICATES_DIR) + u'/' + name;
}

DevService::Options withCertificate(const QString &name)
{
    return {.port = 0, .certificate = certificate(name + u".pem"_s), .key = certificate(name + u".key"_s)};
}

QString withScheme(const QString &scheme, const QString &url)
{
    return scheme + url.sliced(url.indexOf(u':'));
}

} // namespace

/// A service that cannot be reached, is not the right one, or does not let go. Only one authority is trusted.
class TestEndpointConnections : public EndpointTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void unreachable_data();
    void unreachable();
    void proxyRefuses_data();
    void proxyRefuses();
    void plainAddressOnSecurePort_data();
    void plainAddressOnSecurePort();
    void trustedCertificate_data();
    void trustedCertificate();
    void untrustedCertificate_data();
    void untrustedCertificate();
    void neverAnswered_data();
    void neverAnswered();
    void endlessBody_data();
    void endlessBody();
    void bigBodyIsSentOnce_data();
    void bigBodyIsSentOnce();

private:
    void checkAnotherIsAnswered();

    QSslConfiguration m_configuration;
};

void TestEndpointConnections::initTestCase()
{
    m_configuration = QSslConfiguration::defaultConfiguration();
    const QList<QSslCertificate> trusted = QSslCertificate::fromPath(certificate(u"ca.pem"_s));
    QCOMPARE(trusted.size(), 1);
    QSslConfiguration configuration = m_configuration;
    configuration.setCaCertificates(trusted);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void TestEndpointConnections::cleanupTestCase()
{
    QSslConfiguration::setDefaultConfiguration(m_configuration);
}

void TestEndpointConnections::unreachable_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("text");

    const QString refused = u"http://127.0.0.1:%1/api/"_s.arg(closedPort());
    // An address has room for it, a question to a name server has not: it fails without one being asked.
    const QString unknown = QStringList(5, QString(60, u'h')).join(u'.');
    for (const int index : operationsToTry()) {
        const char *const name = operationAt(index).name;
        QTest::addRow("refused-%s", name) << index << refused << u"Connection refused"_s;
        QTest::addRow("host-not-found-%s", name)
            << index << u"http://%1/api/"_s.arg(unknown) << u"Host %1 not found"_s.arg(unknown);
        QTest::addRow("secure-address-on-plain-port-%s", name) << index << u"https"_s << u"!"_s;
    }
}

void TestEndpointConnections::unreachable()
{
    QFETCH(int, operation);
    QFETCH(QString, base);
    QFETCH(QString, text);
    const EndpointOperation &tried = operationAt(operation);
    const bool wrongProtocol = base == u"https"_s;
    if (wrongProtocol) {
        m_server->answerAlways(
            {httpAnswer(400, "no"), RawAnswer::Ending::Close, RawAnswer::Moment::OnConnect});
        base = withScheme(u"https"_s, m_server->baseUrl());
    }
    m_fixture->setApiBase(base);
    begin(tried);
    QVERIFY(m_fixture->settle());
    EndpointOutcome outcome = expectedOutcome(tried, true, {});
    if (outcome.status.endsWith(u'!'))
        outcome.status = outcome.status.chopped(1) + text;
    checkExactly(tried, outcome, {});
    if (wrongProtocol) {
        // The first byte of a handshake's record, and never a request in clear.
        WAIT_VERIFY(m_server->strayBytes().startsWith('\x16'));
        QCOMPARE(m_server->requestCount(), 0);
    }
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointConnections::proxyRefuses_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QString>("scheme");

    for (const QString &scheme : {u"http"_s, u"https"_s}) {
        for (const int index : operationsToTry())
            QTest::addRow("%s-%s", qPrintable(scheme), operationAt(index).name) << index << scheme;
    }
}

void TestEndpointConnections::proxyRefuses()
{
    QFETCH(int, operation);
    QFETCH(QString, scheme);
    const EndpointOperation &tried = operationAt(operation);
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    const auto restore = qScopeGuard([&before] { QNetworkProxy::setApplicationProxy(before); });
    // The proxy would be the one to look up the host: without it the text would be of a host not found.
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, closedPort()));
    m_fixture->setApiBase(scheme + u"://service.example/api/"_s);
    begin(tried);
    QVERIFY(m_fixture->settle());
    EndpointOutcome outcome = expectedOutcome(tried, true, {});
    if (outcome.status.endsWith(u'!'))
        outcome.status = outcome.status.chopped(1)
            + (scheme == u"http"_s ? u"Connection refused"_s : u"Proxy connection refused"_s);
    checkExactly(tried, outcome, {});
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointConnections::plainAddressOnSecurePort_data()
{
    addOperationRows();
}

void TestEndpointConnections::plainAddressOnSecurePort()
{
    QFETCH(int, operation);
    const EndpointOperation &tried = operationAt(operation);
    // What a server that speaks TLS says to a request in clear: a fatal alert.
    const RawAnswer alert{QByteArray::fromHex("15030100020228"), RawAnswer::Ending::Close,
                          RawAnswer::Moment::AfterHead};
    m_server->answerAlways(alert);
    begin(tried);
    QVERIFY(m_fixture->settle());
    checkExactly(tried, expectedOutcome(tried, true, {}), {});
    checkRequests(tried, alert);
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointConnections::trustedCertificate_data()
{
    QTest::addColumn<int>("operation");
    for (const int index : allOperations())
        QTest::newRow(operationAt(index).name) << index;
}

void TestEndpointConnections::trustedCertificate()
{
    QFETCH(int, operation);
    const EndpointOperation &tried = operationAt(operation);
    DevService service(withCertificate(u"server"_s));
    QVERIFY(service.start());
    service.setAnswer(QLatin1StringView(tried.path), {200, "text/plain", tried.goodAnswer, {}});
    m_fixture->setApiBase(service.apiBase());
    begin(tried);
    QVERIFY(m_fixture->settle());
    QCOMPARE(m_fixture->state().status(), QString::fromUtf8(tried.goodStatus));
    QCOMPARE(m_fixture->state().statusOK(), 1);
    service.stop();
    QCOMPARE(service.requestCount(), tried.goodRequests);
}

void TestEndpointConnections::untrustedCertificate_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QString>("name");

    for (const QByteArray name : {"self-signed", "unknown-ca", "other-host", "expired"}) {
        for (const int index : operationsToTry())
            QTest::newRow(name + '-' + operationAt(index).name) << index << QString::fromLatin1(name);
    }
}

void TestEndpointConnections::untrustedCertificate()
{
    QFETCH(int, operation);
    QFETCH(QString, name);
    const EndpointOperation &tried = operationAt(operation);
    DevService service(withCertificate(name));
    QVERIFY(service.start());
    m_fixture->setApiBase(service.apiBase());
    begin(tried);
    QVERIFY(m_fixture->settle());
    checkExactly(tried, expectedOutcome(tried, true, {}), {});
    service.stop();
    QVERIFY(service.connectionCount() > 0);
    // Not even the head of a request came, so nothing of a body.
    QCOMPARE(service.requestCount(), 0);
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointConnections::neverAnswered_data()
{
    addOperationRows();
}

void TestEndpointConnections::neverAnswered()
{
    QFETCH(int, operation);
    const EndpointOperation &held = operationAt(operation);
    m_server->answerNext(holdRequest());
    QSignalSpy arrived(m_server.get(), &RawHttpServer::requestArrived);
    begin(held);
    QVERIFY(arrived.wait(60'000));
    checkAnotherIsAnswered();
    QCOMPARE(m_fixture->state().busy(), held.decoding == Decoding::Worker);
    QCOMPARE(differences(fileAndDisk(m_before), fileAndDisk(m_fixture->snapshot())),
             held.decoding == Decoding::Worker ? QStringList{u"busy"_s} : QStringList());
    m_fixture->destroyController();
}

/// While a request is in progress.
void TestEndpointConnections::checkAnotherIsAnswered()
{
    QSignalSpy status(&m_fixture->state(), &AppState::statusChanged);
    m_server->answerNext(answerWith(R"({"files":[{},{},{}]})"));
    m_fixture->state().stockSearch({});
    WAIT_COMPARE(m_fixture->state().status(), u"3 stock file(s)."_s);
    QCOMPARE(status.count(), 1);
    QCOMPARE(m_server->requestCount(), 2);
}

void TestEndpointConnections::endlessBody_data()
{
    addOperationRows();
}

void TestEndpointConnections::endlessBody()
{
    QFETCH(int, operation);
    const EndpointOperation &fed = operationAt(operation);
    RawAnswer endless{"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n{\"status\":\"ok\","};
    endless.endless = true;
    m_server->answerNext(endless);
    begin(fed);
    WAIT_VERIFY(m_server->endlessBytes() > 500'000);
    checkAnotherIsAnswered();
    const qint64 taken = m_server->endlessBytes();
    WAIT_VERIFY(m_server->endlessBytes() > taken);
    QCOMPARE(m_fixture->state().busy(), fed.decoding == Decoding::Worker);
    QCOMPARE(differences(fileAndDisk(m_before), fileAndDisk(m_fixture->snapshot())),
             fed.decoding == Decoding::Worker ? QStringList{u"busy"_s} : QStringList());
    m_fixture->destroyController();
    QCOMPARE(m_server->requestCount(), 2);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

void TestEndpointConnections::bigBodyIsSentOnce_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("ending");
    QTest::addColumn<int>("moment");

    const std::pair<RawAnswer::Ending, const char *> endings[] = {{RawAnswer::Ending::Close, "close"},
                                                                  {RawAnswer::Ending::Reset, "reset"}};
    const std::pair<RawAnswer::Moment, const char *> moments[] = {
        {RawAnswer::Moment::AfterHead, "after-head"}, {RawAnswer::Moment::AfterRequest, "after-request"}};
    // Those that send a file; the last one sends it as text in an object, the others in a form.
    for (const char *const name :
         {"kvt_info", "convertOp", "toolConvert", "previewSegments", "applySegments", "applyPatchToBin"}) {
        for (const auto &[ending, endingName] : endings) {
            for (const auto &[moment, momentName] : moments)
                QTest::addRow("%s-%s-%s", endingName, momentName, name)
                    << QByteArray(name) << int(ending) << int(moment);
        }
    }
}

void TestEndpointConnections::bigBodyIsSentOnce()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, ending);
    QFETCH(int, moment);
    const EndpointOperation &tried = operationNamed(operation);
    m_fixture->resizeInputs(bigBody);
    m_server->answerNext({{}, RawAnswer::Ending(ending), RawAnswer::Moment(moment)});
    begin(tried);
    QVERIFY(m_fixture->settle());
    EndpointOutcome outcome = expectedOutcome(tried, true, {});
    if (tried.decoding == Decoding::Silent)
        outcome.status = u"Opened other.kvt \u2014 20000000 bytes."_s;
    checkExactly(tried, outcome, {});
    QCOMPARE(m_server->requestCount(), 1);
    if (RawAnswer::Moment(moment) == RawAnswer::Moment::AfterRequest)
        QVERIFY(m_server->request(0).body.size() > bigBody);
    else
        QVERIFY(!m_server->request(0).complete);
    m_fixture->resizeInputs(smallBody);
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

KVTEDITOR_TEST_MAIN(TestEndpointConnections)
#include "tst_EndpointConnections.moc"
