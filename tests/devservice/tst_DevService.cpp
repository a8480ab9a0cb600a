#include "ServiceTest.h"
#include "support/TestMain.h"

#include <QSslSocket>
#include <QTcpServer>

#include <future>

using namespace Qt::StringLiterals;

namespace {

const QString update = u"updates/kvteditornew/update.json"_s;
const QByteArray updatePath = "/api/updates/kvteditornew/update.json";

QString certificate(const QString &name)
{
    return QStringLiteral(KVTEDITOR_CERTIFICATES_DIR) + u'/' + name;
}

DevService::Options withCertificate(const QString &name)
{
    return {.certificate = certificate(name + ".pem"_L1), .key = certificate(name + ".key"_L1)};
}

} // namespace

class TestDevService : public ServiceTest
{
    Q_OBJECT

private slots:
    void requestsAreRecordedAsSent();
    void largeUploadArrivesWhole();
    void cutBodyIsRecordedAsIncomplete();
    void whatIsNoRequestIsRefusedAndNotCounted_data();
    void whatIsNoRequestIsRefusedAndNotCounted();
    void unknownPathAndMethodAreJsonErrors();
    void updateNamesVersionAndReachableDownload();
    void answerCanBeReplaced();
    void manyRequestsWhileOthersAreHeld();
    void stopAnswersHeldRequests();
    void stopBreaksOffAnEndlessBody();
    void stopsTwiceAndStartsAgain();
    void portInUseIsReported();
    void listensOnLoopbackOnly();

    void goodCertificateIsAccepted();
    void badCertificateIsRefusedBeforeAnyByte_data();
    void badCertificateIsRefusedBeforeAnyByte();
    void wrongProtocolIsNotCounted();
    void unusableCertificateIsReported();
};

void TestDevService::requestsAreRecordedAsSent()
{
    postForm(url(u"kvt_worker/process.aspx"_s), {{"b", "2"}, {"a", "1"}},
             {{"file", "bytes", "my \"file\".kvt"}});
    get(url(update + "?x=1"_L1));
    QCOMPARE(m_service->requestCount(), 2);
    QCOMPARE(m_service->connectionCount(), 2);
    QCOMPARE(m_service->requestCount(u"kvt_worker/process.aspx"_s), 1);
    QCOMPARE(m_service->requestCount(u"/api/kvt_worker/process.aspx"_s), 1);
    QCOMPARE(m_service->requestCount(u"feedback.aspx"_s), 0);
    const QList<ServiceRequest> requests = m_service->requests();
    QCOMPARE(requests.size(), 2);
    const ServiceRequest &form = requests[0];
    QCOMPARE(form.method, "POST");
    QCOMPARE(form.path, u"/api/kvt_worker/process.aspx"_s);
    QVERIFY(form.complete);
    QVERIFY(form.bodySize > 100);
    QStringList names;
    for (const ReceivedPart &part : form.parts)
        names.append(part.name);
    QCOMPARE(names, QStringList({u"b"_s, u"a"_s, u"file"_s}));
    QCOMPARE(form.field(u"b"_s), u"2"_s);
    QCOMPARE(form.part(u"file"_s)->fileName, u"my \"file\".kvt"_s);
    QCOMPARE(form.part(u"file"_s)->contentType, "application/octet-stream");
    QCOMPARE(form.part(u"file"_s)->data, "bytes");
    QCOMPARE(form.part(u"none"_s), nullptr);
    QCOMPARE(requests[1].method, "GET");
    QCOMPARE(requests[1].path, u"/api/"_s + update);
}

void TestDevService::largeUploadArrivesWhole()
{
    const QByteArray bin(20'000'000, '\r');
    QVERIFY(askWorker("convert_vbf2bin", {{"file", bin}}, {{"vbf_skip_verify", "0"}}).body == bin);
    const ServiceRequest request = m_service->requests().first();
    QVERIFY(request.bodySize > bin.size());
    QCOMPARE(request.part(u"file"_s)->size, bin.size());
    QCOMPARE(request.part(u"file"_s)->data.size(), 1 << 20);
}

void TestDevService::cutBodyIsRecordedAsIncomplete()
{
    const QByteArray request = "POST /api/feedback.aspx HTTP/1.1\r\nHost: x\r\nContent-Length: 1000\r\n\r\n";
    rawExchange(*m_service, request + ticketOf("dev"), true);
    QCOMPARE(m_service->requestCount(u"feedback.aspx"_s), 1);
    QVERIFY(!m_service->requests().first().complete);
    QCOMPARE(post(url(u"feedback.aspx"_s), ticketOf("dev")).json().value("ticket_id"_L1), u"T-1001"_s);
}

void TestDevService::whatIsNoRequestIsRefusedAndNotCounted_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("no-http") << QByteArray("what is this\r\n\r\n") << QByteArray("HTTP/1.1 400 ");
    QTest::newRow("body-without-end")
        << QByteArray("POST /_dev/clear HTTP/1.1\r\nHost: x\r\n\r\n") << QByteArray("HTTP/1.1 411 ");
}

void TestDevService::whatIsNoRequestIsRefusedAndNotCounted()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, answer);
    const QByteArray answered = rawExchange(*m_service, bytes);
    QVERIFY2(answered.startsWith(answer), answered.constData());
    QCOMPARE(m_service->requestCount(), 0);
    QCOMPARE(m_service->connectionCount(), 1);
}

void TestDevService::unknownPathAndMethodAreJsonErrors()
{
    const Outcome unknown = get(url(u"no/such.aspx"_s));
    QCOMPARE(unknown.status, 404);
    QCOMPARE(unknown.refusal(), u"No such endpoint: /api/no/such.aspx"_s);
    const Outcome wrong = get(url(u"feedback.aspx"_s));
    QCOMPARE(wrong.status, 405);
    QCOMPARE(wrong.refusal(), u"Method not allowed"_s);
}

void TestDevService::updateNamesVersionAndReachableDownload()
{
    DevService service({.updateVersion = u"5.1"_s});
    QVERIFY(service.start());
    const QJsonObject json = get(service.apiBase() + update).json();
    QCOMPARE(json.value("latest_version"_L1).toString(), u"5.1"_s);
    const Outcome download = get(json.value("download_url"_L1).toString());
    QCOMPARE(download.status, 200);
    QVERIFY(download.body.contains("stand-in"));
}

void TestDevService::answerCanBeReplaced()
{
    m_service->setAnswer(u"feedback.aspx"_s, {418, "text/plain", "short and stout", {{"X-Pot", "tea"}}});
    const Outcome replaced = post(url(u"feedback.aspx"_s), ticketOf("dev"));
    QCOMPARE(replaced.status, 418);
    QCOMPARE(replaced.body, "short and stout");
    m_service->setAnswer(update, {204});
    const QByteArray nothing = rawGet(*m_service, updatePath);
    QVERIFY2(nothing.startsWith("HTTP/1.1 204 ") && nothing.endsWith("\r\n\r\n"), nothing.constData());
}

void TestDevService::manyRequestsWhileOthersAreHeld()
{
    const auto ask = [this] { return rawGet(*m_service, updatePath).contains("latest_version"); };
    const auto askAtOnce = [&ask](int count) {
        std::vector<std::future<bool>> asked;
        for (int i = 0; i < count; ++i)
            asked.push_back(std::async(std::launch::async, ask));
        return asked;
    };
    QVERIFY(m_service->setFault(update, u"hold"_s, 8));
    std::vector<std::future<bool>> held = askAtOnce(8);
    QVERIFY(m_service->awaitHeld(8));
    for (std::future<bool> &answered : askAtOnce(24))
        QVERIFY(answered.get());
    QCOMPARE(m_service->heldCount(), 8);
    m_service->release();
    for (std::future<bool> &answered : held)
        QVERIFY(answered.get());
    QCOMPARE(m_service->heldCount(), 0);
    QCOMPARE(m_service->requestCount(update), 32);
}

void TestDevService::stopAnswersHeldRequests()
{
    QVERIFY(m_service->setFault(update, u"hold"_s));
    auto held = std::async(std::launch::async, [this] { return rawGet(*m_service, updatePath); });
    QVERIFY(m_service->awaitHeld(1));
    m_service->stop();
    QVERIFY(held.get().startsWith("HTTP/1.1 503 "));
    QCOMPARE(m_service->heldCount(), 0);
}

void TestDevService::stopBreaksOffAnEndlessBody()
{
    QVERIFY(m_service->setFault(update, u"endless-body"_s));
    std::promise<bool> answered;
    auto client = std::async(std::launch::async, [this, &answered] {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_service->port());
        socket.write("GET " + updatePath + " HTTP/1.1\r\nHost: x\r\n\r\n");
        answered.set_value(socket.waitForReadyRead(60'000));
        while (socket.waitForReadyRead(60'000))
            socket.readAll();
        return socket.state();
    });
    QVERIFY(answered.get_future().get());
    m_service->stop();
    QCOMPARE(client.get(), QAbstractSocket::UnconnectedState);
}

void TestDevService::stopsTwiceAndStartsAgain()
{
    m_service->stop();
    m_service->stop();
    QCOMPARE(get(url(update)).error, QNetworkReply::ConnectionRefusedError);
    QVERIFY(m_service->start());
    QCOMPARE(get(url(update)).status, 200);
    QCOMPARE(m_service->requestCount(), 1);
}

void TestDevService::portInUseIsReported()
{
    DevService second({.port = m_service->port()});
    QString error;
    QVERIFY(!second.start(&error));
    QVERIFY2(error.contains(QString::number(m_service->port())), qPrintable(error));
    QVERIFY(!second.start());
    const quint16 port = m_service->port();
    m_service->stop();
    QVERIFY(second.start());
    QCOMPARE(second.port(), port);
}

void TestDevService::listensOnLoopbackOnly()
{
    // Were the port taken on every address, no other loopback address could have it.
    QTcpServer neighbour;
    QVERIFY(neighbour.listen(QHostAddress(u"127.0.0.2"_s), m_service->port()));
    QCOMPARE(m_service->apiBase(), u"http://127.0.0.1:%1/api/"_s.arg(m_service->port()));
}

void TestDevService::goodCertificateIsAccepted()
{
    DevService service(withCertificate(u"server"_s));
    QString error;
    QVERIFY2(service.start(&error), qPrintable(error));
    QVERIFY(service.apiBase().startsWith("https://127.0.0.1:"_L1));
    const QString authority = certificate(u"ca.pem"_s);
    const Outcome outcome = get(service.apiBase() + update, authority);
    QCOMPARE(outcome.error, QNetworkReply::NoError);
    QVERIFY(outcome.json().value("download_url"_L1).toString().startsWith("https://"_L1));
    QVERIFY(service.setFault(update, u"short-body"_s));
    QVERIFY(get(service.apiBase() + update, authority).error != QNetworkReply::NoError);
    QVERIFY(service.setFault(update, u"redirect-plain"_s));
    QCOMPARE(get(service.apiBase() + update, authority).error, QNetworkReply::InsecureRedirectError);
    QCOMPARE(service.requestCount(update), 3);
}

void TestDevService::badCertificateIsRefusedBeforeAnyByte_data()
{
    QTest::addColumn<QSslError::SslError>("error");
    QTest::newRow("self-signed") << QSslError::SelfSignedCertificate;
    QTest::newRow("other-host") << QSslError::HostNameMismatch;
    QTest::newRow("expired") << QSslError::CertificateExpired;
    QTest::newRow("unknown-ca") << QSslError::UnableToGetLocalIssuerCertificate;
}

void TestDevService::badCertificateIsRefusedBeforeAnyByte()
{
    QFETCH(QSslError::SslError, error);
    DevService service(withCertificate(QString::fromLatin1(QTest::currentDataTag())));
    QVERIFY(service.start());
    const Outcome outcome =
        post(service.apiBase() + "feedback.aspx"_L1, "{}", "application/json", certificate(u"ca.pem"_s));
    QCOMPARE(outcome.error, QNetworkReply::SslHandshakeFailedError);
    QVERIFY(outcome.tlsErrors.contains(error));
    service.stop();
    QVERIFY(service.connectionCount() > 0);
    QCOMPARE(service.requestCount(), 0);
}

void TestDevService::wrongProtocolIsNotCounted()
{
    QSslSocket client;
    client.connectToHostEncrypted(u"127.0.0.1"_s, m_service->port());
    QVERIFY(!client.waitForEncrypted(60'000));
    m_service->stop();
    QCOMPARE(m_service->requestCount(), 0);

    DevService service(withCertificate(u"server"_s));
    QVERIFY(service.start());
    QVERIFY(!rawGet(service, updatePath).startsWith("HTTP"));
    service.stop();
    QCOMPARE(service.connectionCount(), 1);
    QCOMPARE(service.requestCount(), 0);
}

void TestDevService::unusableCertificateIsReported()
{
    DevService missing({.certificate = u"/no/such.pem"_s, .key = u"/no/such.key"_s});
    QString error;
    QVERIFY(!missing.start(&error));
    QVERIFY2(error.contains("/no/such.pem"_L1), qPrintable(error));
    DevService mixed({.certificate = certificate(u"server.pem"_s), .key = certificate(u"expired.key"_s)});
    QVERIFY(!mixed.start());
}

KVTEDITOR_TEST_MAIN(TestDevService)
#include "tst_DevService.moc"
