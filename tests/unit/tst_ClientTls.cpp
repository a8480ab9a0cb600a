#include "ClientCall.h"
#include "DevService.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QFile>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTest>

#include <memory>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QByteArray okJson = R"({"status":"ok"})";

QString certificate(const QString &name)
{
    return QStringLiteral(KVTEDITOR_CERTIFICATES_DIR) + u'/' + name;
}

DevService::Options withCertificate(const QString &name)
{
    return {.port = 0, .certificate = certificate(name + u".pem"_s), .key = certificate(name + u".key"_s)};
}

/// Of a server with the good certificate.
QSslConfiguration serverConfiguration()
{
    QFile key(certificate(u"server.key"_s));
    if (!key.open(QIODevice::ReadOnly))
        qFatal("No key: %s", qPrintable(key.errorString()));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate::fromPath(certificate(u"server.pem"_s)).constFirst());
    configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
    return configuration;
}

QString withScheme(const QString &scheme, const QString &url)
{
    return scheme + url.sliced(url.indexOf(u':'));
}

bool isPost(Primitive primitive)
{
    return primitive != Primitive::GetJson && primitive != Primitive::DownloadFile;
}

void eachPrimitive()
{
    QTest::addColumn<int>("primitive");
    for (const auto &[primitive, name] : primitives) {
        QTest::newRow(name) << int(primitive);
    }
}

} // namespace

/// The client over TLS, against a server with good and bad certificates. One authority alone is trusted.
class TestClientTls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void goodCertificateIsAccepted_data();
    void goodCertificateIsAccepted();
    void badCertificateIsRefusedBeforeAnyByte_data();
    void badCertificateIsRefusedBeforeAnyByte();
    void secureAddressOnPlainPort_data();
    void secureAddressOnPlainPort();
    void plainAddressOnSecurePort_data();
    void plainAddressOnSecurePort();
    void redirectToPlainIsRefused_data();
    void redirectToPlainIsRefused();
    void redirectWithinTlsIsFollowed();
    void speaksTheOldProtocol_data();
    void speaksTheOldProtocol();
    void sentOnce_data();
    void sentOnce();

private:
    void startService(const DevService::Options &options);
    /// Sends one request, waits for its callback and for the end of everything that belongs to it.
    void call(int primitive, qsizetype bodySize = 10);

    QSslConfiguration m_before;
    std::unique_ptr<DevService> m_service;
    std::unique_ptr<VoxApiClient> m_client;
    std::unique_ptr<Outcome> m_outcome;
};

void TestClientTls::initTestCase()
{
    m_before = QSslConfiguration::defaultConfiguration();
    const QList<QSslCertificate> trusted = QSslCertificate::fromPath(certificate(u"ca.pem"_s));
    QCOMPARE(trusted.size(), 1);
    QSslConfiguration configuration = m_before;
    configuration.setCaCertificates(trusted);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void TestClientTls::cleanupTestCase()
{
    QSslConfiguration::setDefaultConfiguration(m_before);
}

void TestClientTls::init()
{
    m_outcome = std::make_unique<Outcome>();
    m_client = std::make_unique<VoxApiClient>();
}

void TestClientTls::cleanup()
{
    m_client.reset();
    m_service.reset();
}

void TestClientTls::startService(const DevService::Options &options)
{
    m_service = std::make_unique<DevService>(options);
    QString error;
    QVERIFY2(m_service->start(&error), qPrintable(error));
    const ServiceAnswer answer{200, "application/json", okJson, {}};
    m_service->setAnswer(u"x"_s, answer);
    m_service->setAnswer(u"kvt_worker/process.aspx"_s, answer);
    m_client->setApiBase(m_service->apiBase());
}

void TestClientTls::call(int primitive, qsizetype bodySize)
{
    start(*m_client, Primitive(primitive), *m_outcome, bodySize);
    WAIT_COMPARE(m_outcome->calls, 1);
    WAIT_COMPARE(m_client->findChildren<QNetworkAccessManager *>().size(), 0);
    QCOMPARE(m_outcome->calls, 1);
}

void TestClientTls::goodCertificateIsAccepted_data()
{
    eachPrimitive();
}

void TestClientTls::goodCertificateIsAccepted()
{
    QFETCH(int, primitive);
    startService(withCertificate(u"server"_s));
    QVERIFY(m_client->url(u"x"_s).startsWith(u"https://127.0.0.1:"_s));
    call(primitive);
    QVERIFY2(!m_outcome->failed(), qPrintable(m_outcome->error));
    QCOMPARE(m_service->requestCount(), 1);
    const QByteArray answer =
        Primitive(primitive) == Primitive::KvtWorker ? m_outcome->worker.text.toUtf8() : m_outcome->bytes;
    const bool objectOnly =
        Primitive(primitive) == Primitive::PostJson || Primitive(primitive) == Primitive::GetJson;
    QCOMPARE(answer, objectOnly ? QByteArray() : okJson);
    QCOMPARE(m_outcome->object.value(u"status"_s).toString() == u"ok"_s,
             objectOnly || Primitive(primitive) == Primitive::PostMultipart);
}

void TestClientTls::badCertificateIsRefusedBeforeAnyByte_data()
{
    QTest::addColumn<int>("primitive");
    QTest::addColumn<QString>("name");
    for (const char *name : {"self-signed", "other-host", "expired", "unknown-ca"}) {
        for (const auto &[primitive, primitiveName] : primitives) {
            const QByteArray row = QByteArray(name) + '-' + primitiveName;
            QTest::newRow(row.constData()) << int(primitive) << QString::fromLatin1(name);
        }
    }
}

void TestClientTls::badCertificateIsRefusedBeforeAnyByte()
{
    QFETCH(int, primitive);
    QFETCH(QString, name);
    startService(withCertificate(name));
    call(primitive);
    QVERIFY(m_outcome->failed());
    QVERIFY(!m_outcome->worker.ok);
    QCOMPARE(m_outcome->bytes, QByteArray());
    QCOMPARE(m_outcome->object, QJsonObject());
    m_service->stop();
    QVERIFY(m_service->connectionCount() > 0);
    QCOMPARE(m_service->requestCount(), 0);
}

void TestClientTls::secureAddressOnPlainPort_data()
{
    QTest::addColumn<int>("primitive");
    QTest::addColumn<RawAnswer>("answer");
    QTest::addColumn<QString>("error");

    using Ending = RawAnswer::Ending;
    using Moment = RawAnswer::Moment;
    const QByteArray refusal = httpAnswer(400, "no");
    const QString noTls = u"SSL handshake failed: "_s;
    const QString closed = u"Connection closed"_s;
    const std::tuple<const char *, RawAnswer, QString> answers[] = {
        {"answers-at-connect", {refusal, Ending::Close, Moment::OnConnect}, noTls},
        {"answers-first-bytes", {refusal, Ending::Close, Moment::OnFirstBytes}, noTls},
        {"closes-at-connect", {{}, Ending::Close, Moment::OnConnect}, closed},
        {"closes-at-first-bytes", {{}, Ending::Close, Moment::OnFirstBytes}, closed},
        {"resets-at-connect", {{}, Ending::Reset, Moment::OnConnect}, {}},
        {"resets-at-first-bytes", {{}, Ending::Reset, Moment::OnFirstBytes}, closed},
    };
    for (const auto &[primitive, name] : primitives) {
        for (const auto &[answerName, answer, error] : answers)
            QTest::addRow("%s-%s", answerName, name) << int(primitive) << answer << error;
    }
}

// A server that waits for the end of a request's head may wait for ever: a handshake need not hold an empty
// line. So this one does not.
void TestClientTls::secureAddressOnPlainPort()
{
    QFETCH(int, primitive);
    QFETCH(RawAnswer, answer);
    QFETCH(QString, error);
    RawHttpServer server;
    server.answerAlways(answer);
    m_client->setApiBase(withScheme(u"https"_s, server.baseUrl()));
    call(primitive);
    const QString said =
        Primitive(primitive) == Primitive::KvtWorker ? m_outcome->worker.error : m_outcome->error;
    QVERIFY2(!said.isEmpty() && said.startsWith(error), qPrintable(said));
    QVERIFY(!m_outcome->worker.ok);
    QCOMPARE(m_outcome->bytes, QByteArray());
    QCOMPARE(server.requestCount(), 0);
    // Qt's socket tries again by itself where it is reset before it knows that it is connected.
    if (!error.isEmpty())
        QCOMPARE(server.connectionCount(), 1);
}

void TestClientTls::plainAddressOnSecurePort_data()
{
    eachPrimitive();
}

void TestClientTls::plainAddressOnSecurePort()
{
    QFETCH(int, primitive);
    startService(withCertificate(u"server"_s));
    m_client->setApiBase(withScheme(u"http"_s, m_service->apiBase()));
    call(primitive);
    QVERIFY(m_outcome->failed());
    QVERIFY(!m_outcome->worker.ok);
    m_service->stop();
    QCOMPARE(m_service->requestCount(), 0);
}

void TestClientTls::redirectToPlainIsRefused_data()
{
    eachPrimitive();
}

void TestClientTls::redirectToPlainIsRefused()
{
    QFETCH(int, primitive);
    // What follows a redirect would find a good answer here.
    RawHttpServer plain;
    plain.answerAlways(answerWith(okJson));
    startService(withCertificate(u"server"_s));
    const QByteArray location = withScheme(u"http"_s, plain.baseUrl()).toLatin1();
    const ServiceAnswer redirect{302, "text/plain", {}, {{"Location", location}}};
    m_service->setAnswer(u"x"_s, redirect);
    m_service->setAnswer(u"kvt_worker/process.aspx"_s, redirect);
    call(primitive);
    QVERIFY(m_outcome->failed());
    QVERIFY(!m_outcome->worker.ok);
    QCOMPARE(m_outcome->object, QJsonObject());
    QCOMPARE(m_outcome->bytes, QByteArray());
    QCOMPARE(m_service->requestCount(), 1);
    QCOMPARE(plain.connectionCount(), 0);
}

void TestClientTls::redirectWithinTlsIsFollowed()
{
    startService(withCertificate(u"server"_s));
    m_service->setAnswer(u"x"_s, {302, "text/plain", {}, {{"Location", "/api/y"}}});
    m_service->setAnswer(u"y"_s, {200, "application/octet-stream", "the file", {}});
    call(int(Primitive::DownloadFile));
    QCOMPARE(m_outcome->error, QString());
    QCOMPARE(m_outcome->bytes, QByteArray("the file"));
    QCOMPARE(m_service->requestCount(u"y"_s), 1);
}

void TestClientTls::speaksTheOldProtocol_data()
{
    eachPrimitive();
}

void TestClientTls::speaksTheOldProtocol()
{
    QFETCH(int, primitive);
    QSslConfiguration configuration = serverConfiguration();
    configuration.setAllowedNextProtocols(
        {QSslConfiguration::ALPNProtocolHTTP2, QSslConfiguration::NextProtocolHttp1_1});
    QSslServer server;
    server.setSslConfiguration(configuration);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    m_client->setApiBase(u"https://127.0.0.1:%1/api/"_s.arg(server.serverPort()));
    start(*m_client, Primitive(primitive), *m_outcome);
    WAIT_VERIFY(server.hasPendingConnections());
    const auto *const socket = qobject_cast<QSslSocket *>(server.nextPendingConnection());
    QVERIFY(socket && socket->isEncrypted());
    QVERIFY(socket->sslConfiguration().nextNegotiatedProtocol() != QSslConfiguration::ALPNProtocolHTTP2);
}

void TestClientTls::sentOnce_data()
{
    QTest::addColumn<int>("primitive");
    QTest::addColumn<int>("ending");
    QTest::addColumn<int>("moment");

    const std::pair<RawAnswer::Ending, const char *> endings[] = {{RawAnswer::Ending::Close, "close"},
                                                                  {RawAnswer::Ending::Reset, "reset"}};
    const std::pair<RawAnswer::Moment, const char *> moments[] = {
        {RawAnswer::Moment::AfterHead, "after-head"}, {RawAnswer::Moment::AfterRequest, "after-request"}};
    for (const auto &[primitive, name] : primitives) {
        if (!isPost(primitive)) {
            continue;
        }
        for (const auto &[ending, endingName] : endings) {
            for (const auto &[moment, momentName] : moments) {
                QTest::addRow("%s-%s-%s", name, endingName, momentName)
                    << int(primitive) << int(ending) << int(moment);
            }
        }
    }
}

void TestClientTls::sentOnce()
{
    QFETCH(int, primitive);
    QFETCH(int, ending);
    QFETCH(int, moment);
    RawHttpServer server(serverConfiguration());
    server.answerAlways({{}, RawAnswer::Ending(ending), RawAnswer::Moment(moment)});
    m_client->setApiBase(server.baseUrl());
    call(primitive, 2'000'000);
    QVERIFY(m_outcome->failed());
    QVERIFY(server.request(0).requestLine().startsWith("POST "));
    // A later request comes after everything that could still be on its way.
    server.answerAlways(answerWith("{}"));
    Outcome after;
    start(*m_client, Primitive::GetJson, after);
    WAIT_COMPARE(after.calls, 1);
    QCOMPARE(after.error, QString());
    QCOMPARE(server.requestCount(), 2);
}

KVTEDITOR_TEST_MAIN(TestClientTls)
#include "tst_ClientTls.moc"
