#include "DevService.h"
#include "Exchange.h"
#include "Faults.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QSet>
#include <QTcpSocket>
#include <QtTest/QSignalSpy>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

const QString update = u"updates/kvteditornew/update.json"_s;
const QByteArray updatePath = "/api/updates/kvteditornew/update.json";
const QByteArray okJson = R"({"status":"ok"})";
const QByteArray ticket = ticketOf("dev");

QByteArray headOf(const QByteArray &answer)
{
    return answer.left(answer.indexOf("\r\n\r\n") + 4);
}

QByteArray bodyOf(const QByteArray &answer)
{
    return answer.mid(headOf(answer).size());
}

qint64 announced(const QByteArray &answer)
{
    const qsizetype at = answer.indexOf("Content-Length: ");
    return answer.mid(at + 16, answer.indexOf("\r\n", at) - at - 16).toLongLong();
}

} // namespace

class TestDevFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void wireBytes_data();
    void wireBytes();
    void everyKindIsTested();
    void unknownFaultsAreRefused_data();
    void unknownFaultsAreRefused();
    void refuseAndBack();
    void refuseWhileStopped();
    void holdUntilReleased();
    void stopWithAHeldRequest();
    void closeEarlyLeavesTheBodyUnread_data();
    void closeEarlyLeavesTheBodyUnread();
    void closedAndResetRequestsAreSeenOnce_data();
    void closedAndResetRequestsAreSeenOnce();
    void cutBodies();
    void longBody();
    void slowBodyComesInPieces();
    void bentAnswerWasGivenAndInsteadWasNot();
    void largeBodies_data();
    void largeBodies();
    void endlessBodyEndsWithTheClient();
    void stopEndsAnEndlessBody();
    void redirectLoopIsGivenUp();
    void gzipFaults();
    void timesCountDown();
    void faultOfEveryEndpoint();
    void everyEndpointTakesFaults_data();
    void everyEndpointTakesFaults();
    void faultsOverHttp();
    void wrongOrdersOverHttp();

private:
    QString url(const QString &endpoint) const { return m_service->apiBase() + endpoint; }

    std::unique_ptr<DevService> m_service;
};

void TestDevFaults::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevFaults::cleanup()
{
    m_service.reset();
}

void TestDevFaults::wireBytes_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("inHead");
    QTest::addColumn<QByteArray>("body");
    const auto row = [](const char *fault, const QByteArray &start, const QByteArray &inHead,
                        const QByteArray &body) {
        QTest::newRow(fault) << QString::fromLatin1(fault) << start << inHead << body;
    };
    const QByteArray error = R"({"status":"error","message":"Switched fault","error":"Switched fault"})";
    const QByteArray html = "<!DOCTYPE html><html><body><h1>Gateway</h1></body></html>\n";
    const QByteArray ok = "HTTP/1.1 200 ";
    const QByteArray chunked = "Transfer-Encoding: chunked\r\n";
    row("close", "", "", "");
    row("status:404", "HTTP/1.1 404 ", "application/json", error);
    row("status:500:json", "HTTP/1.1 500 ", "application/json", error);
    row("status:500:html", "HTTP/1.1 500 ", "text/html", html);
    row("status:503:empty", "HTTP/1.1 503 ", "Content-Length: 0\r\n", "");
    row("status:999:empty", "HTTP/1.1 999 ", "", "");
    row("unauthorized", "HTTP/1.1 401 ", "WWW-Authenticate: Basic", "");
    row("html-200", ok, "text/html", html);
    row("bad-json", ok, "Content-Length: 15\r\n", R"({"status":"ok",)");
    row("trailing-json", ok, "", okJson + " and more");
    row("array-json", ok, "", "[1,2,3]");
    row("deep-json", ok, "Content-Length: 100000\r\n", QByteArray(100'000, '['));
    row("bom-json", ok, "", "\xef\xbb\xbf" + okJson);
    row("empty-body", ok, "Content-Length: 0\r\n", "");
    row("garbage", QByteArray("\x00\x01\xfe garbage\r\n\r\n", 15), "", "");
    row("empty-status-line", "\r\n\r\n{", "", okJson);
    row("long-header", ok, "X-Long: " + QByteArray(200 * 1024, 'x') + "\r\n", okJson);
    row("many-headers", ok, QByteArray("X-Many: one\r\n").repeated(200), okJson);
    row("no-length", ok, "Content-Type: application/json\r\n\r\n", okJson);
    row("bad-length", ok, "Content-Length: banana\r\n", okJson);
    row("negative-length", ok, "Content-Length: -5\r\n", okJson);
    row("two-lengths", ok, "Content-Length: 15\r\nContent-Length: 4\r\n", okJson);
    row("bad-chunk", ok, chunked, "zzz\r\n" + okJson + "\r\n0\r\n\r\n");
    row("cut-chunk", ok, chunked, "ff\r\n" + okJson);
    row("no-last-chunk", ok, chunked, "f\r\n" + okJson + "\r\n");
    row("bad-gzip", ok, "Content-Encoding: gzip\r\n", okJson);
}

void TestDevFaults::wireBytes()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, inHead);
    QFETCH(QByteArray, body);
    QVERIFY(m_service->setFault(update, fault));
    const RawOutcome outcome = rawGet(*m_service, updatePath);
    QVERIFY(!outcome.reset);
    QVERIFY(outcome.bytes.startsWith(start));
    QVERIFY(headOf(outcome.bytes).contains(inHead));
    QCOMPARE(bodyOf(outcome.bytes), body);
    QCOMPARE(m_service->requestCount(update), 1);
    m_service->clearFaults();
    QVERIFY(rawGet(*m_service, updatePath).bytes.contains("latest_version"));
}

void TestDevFaults::everyKindIsTested()
{
    const QSet<QString> elsewhere = {
        u"refuse"_s,        u"hold"_s,     u"close-early"_s,    u"reset"_s,
        u"reset-early"_s,   u"slow"_s,     u"reset-mid-body"_s, u"short-body"_s,
        u"long-body"_s,     u"body-64m"_s, u"json-64m"_s,       u"endless-body"_s,
        u"redirect-loop"_s, u"cut-gzip"_s, u"gzip-bomb"_s,      u"redirect-plain"_s};
    const QSet<QString> here = {
        u"close"_s,         u"status"_s,          u"unauthorized"_s, u"html-200"_s,          u"bad-json"_s,
        u"trailing-json"_s, u"array-json"_s,      u"deep-json"_s,    u"bom-json"_s,          u"empty-body"_s,
        u"garbage"_s,       u"long-header"_s,     u"many-headers"_s, u"empty-status-line"_s, u"no-length"_s,
        u"bad-length"_s,    u"negative-length"_s, u"two-lengths"_s,  u"bad-chunk"_s,         u"cut-chunk"_s,
        u"no-last-chunk"_s, u"bad-gzip"_s};
    QSet<QString> kinds;
    for (const FaultKind &kind : faultKinds())
        kinds.insert(kind.name);
    QCOMPARE(kinds, elsewhere + here);
}

void TestDevFaults::unknownFaultsAreRefused_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"", "rain", "hold:1", "status", "status:", "status:abc", "status:99",
                              "status:1000", "status:404:xml", "status:404:json:more"})
        QTest::addRow("[%s]", fault) << QString::fromLatin1(fault);
}

void TestDevFaults::unknownFaultsAreRefused()
{
    QFETCH(QString, fault);
    QVERIFY(!m_service->setFault(update, fault));
    QVERIFY(rawGet(*m_service, updatePath).bytes.contains("latest_version"));
}

void TestDevFaults::refuseAndBack()
{
    const quint16 port = m_service->port();
    for (int round = 0; round < 5; ++round) {
        QVERIFY(m_service->setFault(u"*"_s, u"refuse"_s));
        QVERIFY(rawGet(*m_service, updatePath).refused);
        QCOMPARE(get(url(update)).error, QNetworkReply::ConnectionRefusedError);
        QVERIFY(m_service->setFault(u"*"_s, u"none"_s));
        QCOMPARE(m_service->port(), port);
        QCOMPARE(get(url(update)).status, 200);
    }
    QCOMPARE(m_service->requestCount(), 5);
}

void TestDevFaults::refuseWhileStopped()
{
    m_service->stop();
    QVERIFY(m_service->setFault(update, u"refuse"_s));
    QVERIFY(m_service->start());
    QVERIFY(rawGet(*m_service, updatePath).refused);
    m_service->clearFaults();
    QCOMPARE(get(url(update)).status, 200);
}

void TestDevFaults::holdUntilReleased()
{
    QVERIFY(m_service->setFault(update, u"hold"_s, 2));
    QNetworkAccessManager manager;
    QNetworkReply *first = manager.get(QNetworkRequest(QUrl(url(update))));
    QNetworkReply *second = manager.get(QNetworkRequest(QUrl(url(update))));
    QTRY_COMPARE(m_service->heldCount(), 2);
    QCOMPARE(get(url(update)).status, 200);
    QVERIFY(!first->isFinished() && !second->isFinished());
    m_service->release();
    QTRY_VERIFY(first->isFinished() && second->isFinished());
    QVERIFY(first->readAll().contains("latest_version"));
    QVERIFY(second->readAll().contains("latest_version"));
    QCOMPARE(m_service->heldCount(), 0);
    QCOMPARE(m_service->requestCount(update), 3);
}

void TestDevFaults::stopWithAHeldRequest()
{
    QVERIFY(m_service->setFault(update, u"hold"_s));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, m_service->port());
    client.write("GET " + updatePath + " HTTP/1.1\r\nHost: x\r\n\r\n");
    QTRY_COMPARE(m_service->heldCount(), 1);
    m_service->stop();
    QCOMPARE(m_service->heldCount(), 0);
    QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(client.readAll(), QByteArray());
}

void TestDevFaults::closeEarlyLeavesTheBodyUnread_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("close-early") << u"close-early"_s;
    QTest::newRow("reset-early") << u"reset-early"_s;
}

void TestDevFaults::closeEarlyLeavesTheBodyUnread()
{
    QFETCH(QString, fault);
    QVERIFY(m_service->setFault(u"feedback.aspx"_s, fault));
    const QByteArray body(20'000'000, 'x');
    const RawOutcome outcome = rawPost(*m_service, "/api/feedback.aspx", body);
    QVERIFY(outcome.reset);
    QCOMPARE(outcome.bytes, QByteArray());
    QCOMPARE(m_service->requestCount(u"feedback.aspx"_s), 1);
    QVERIFY(!m_service->requests().first().complete);
    QCOMPARE(m_service->requests().first().bodySize, 0);
}

void TestDevFaults::closedAndResetRequestsAreSeenOnce_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("reset");
    QTest::newRow("close") << u"close"_s << false;
    QTest::newRow("reset") << u"reset"_s << true;
}

void TestDevFaults::closedAndResetRequestsAreSeenOnce()
{
    QFETCH(QString, fault);
    QFETCH(bool, reset);
    QVERIFY(m_service->setFault(u"feedback.aspx"_s, fault));
    const RawOutcome outcome = rawPost(*m_service, "/api/feedback.aspx", ticket);
    QCOMPARE(outcome.bytes, QByteArray());
    QCOMPARE(outcome.reset, reset);
    QCOMPARE(m_service->requestCount(u"feedback.aspx"_s), 1);
    QCOMPARE(m_service->requests().first().body, ticket);
    QVERIFY(post(url(u"feedback.aspx"_s), ticket).error != QNetworkReply::NoError);
}

void TestDevFaults::cutBodies()
{
    for (const QString &fault : {u"short-body"_s, u"reset-mid-body"_s}) {
        QVERIFY(m_service->setFault(update, fault));
        const RawOutcome outcome = rawGet(*m_service, updatePath);
        QVERIFY(outcome.bytes.startsWith("HTTP/1.1 200 "));
        QVERIFY(!bodyOf(outcome.bytes).isEmpty());
        QVERIFY(bodyOf(outcome.bytes).size() < announced(outcome.bytes));
        QCOMPARE(outcome.reset, fault == "reset-mid-body"_L1);
        QVERIFY(get(url(update)).error != QNetworkReply::NoError);
    }
}

void TestDevFaults::longBody()
{
    QVERIFY(m_service->setFault(update, u"long-body"_s));
    const RawOutcome outcome = rawGet(*m_service, updatePath);
    QVERIFY(bodyOf(outcome.bytes).size() > announced(outcome.bytes));
    QVERIFY(outcome.bytes.endsWith("}more than announced"));
}

void TestDevFaults::slowBodyComesInPieces()
{
    QVERIFY(m_service->setFault(update, u"slow"_s));
    QNetworkAccessManager manager;
    QNetworkReply *reply = manager.get(QNetworkRequest(QUrl(url(update))));
    QSignalSpy pieces(reply, &QNetworkReply::readyRead);
    QTRY_VERIFY(reply->isFinished());
    QVERIFY2(pieces.size() > 1, "the body came in one piece");
    QVERIFY(QJsonDocument::fromJson(reply->readAll()).isObject());
}

void TestDevFaults::bentAnswerWasGivenAndInsteadWasNot()
{
    const QString endpoint = u"feedback.aspx"_s;
    QVERIFY(m_service->setFault(endpoint, u"status:500"_s));
    QCOMPARE(post(url(endpoint), ticket).status, 500);
    QVERIFY(m_service->setFault(endpoint, u"short-body"_s));
    QVERIFY(post(url(endpoint), ticket).error != QNetworkReply::NoError);
    m_service->clearFaults();
    QCOMPARE(post(url(endpoint), ticket).json().value("ticket_id"_L1).toString(), u"T-1002"_s);
}

void TestDevFaults::largeBodies_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("last");
    QTest::newRow("body-64m") << u"body-64m"_s << QByteArray("KKK") << QByteArray("KKK");
    QTest::newRow("json-64m") << u"json-64m"_s << QByteArray(R"({"status":"ok","padding":"KK)")
                              << QByteArray("KK\"}");
}

void TestDevFaults::largeBodies()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, last);
    QVERIFY(m_service->setFault(update, fault));
    const Outcome outcome = get(url(update));
    QCOMPARE(outcome.error, QNetworkReply::NoError);
    QCOMPARE(outcome.body.size(), 64 * 1024 * 1024);
    QVERIFY(outcome.body.startsWith(first));
    QVERIFY(outcome.body.endsWith(last));
}

void TestDevFaults::endlessBodyEndsWithTheClient()
{
    QVERIFY(m_service->setFault(update, u"endless-body"_s));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, m_service->port());
    client.write("GET " + updatePath + " HTTP/1.1\r\nHost: x\r\n\r\n");
    QTRY_VERIFY(client.bytesAvailable() > 10'000'000);
    client.abort();
    m_service->clearFaults();
    QCOMPARE(get(url(update)).status, 200);
}

void TestDevFaults::stopEndsAnEndlessBody()
{
    QVERIFY(m_service->setFault(update, u"endless-body"_s));
    QTcpSocket client;
    client.setReadBufferSize(1000);
    client.connectToHost(QHostAddress::LocalHost, m_service->port());
    client.write("GET " + updatePath + " HTTP/1.1\r\nHost: x\r\n\r\n");
    QTRY_VERIFY(client.bytesAvailable() > 0);
    m_service->stop();
    client.setReadBufferSize(0);
    client.readAll();
    QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
}

void TestDevFaults::redirectLoopIsGivenUp()
{
    QVERIFY(m_service->setFault(update, u"redirect-loop"_s));
    const RawOutcome raw = rawGet(*m_service, updatePath);
    QVERIFY(raw.bytes.contains("Location: " + url(update).toLatin1() + "\r\n"));
    QCOMPARE(get(url(update)).error, QNetworkReply::TooManyRedirectsError);
    QVERIFY(m_service->requestCount(update) > 10);
}

void TestDevFaults::gzipFaults()
{
    QVERIFY(m_service->setFault(update, u"cut-gzip"_s));
    const RawOutcome cut = rawGet(*m_service, updatePath);
    QCOMPARE(bodyOf(cut.bytes).size(), 1000);
    QVERIFY(announced(cut.bytes) > 1000);
    QVERIFY(bodyOf(cut.bytes).startsWith("\x1f\x8b"));
    QVERIFY(m_service->setFault(update, u"gzip-bomb"_s));
    const RawOutcome bomb = rawGet(*m_service, updatePath);
    QCOMPARE(bodyOf(bomb.bytes).size(), announced(bomb.bytes));
    QVERIFY(bodyOf(bomb.bytes).size() < 4'000'000);
    // The last four bytes of gzip say what it unpacks to.
    QCOMPARE(bomb.bytes.right(4), QByteArray("\x00\x00\x80\x0c", 4));
}

void TestDevFaults::timesCountDown()
{
    QVERIFY(m_service->setFault(update, u"status:503"_s, 2));
    QCOMPARE(get(url(update)).status, 503);
    QCOMPARE(get(url(update)).status, 503);
    QCOMPARE(get(url(update)).status, 200);
    QVERIFY(m_service->setFault(update, u"status:503"_s, 0));
    QCOMPARE(get(url(update)).status, 200);
}

void TestDevFaults::faultOfEveryEndpoint()
{
    QVERIFY(m_service->setFault(u"*"_s, u"status:500"_s));
    QVERIFY(m_service->setFault(u"feedback.aspx"_s, u"status:404"_s));
    QCOMPARE(get(url(update)).status, 500);
    QCOMPARE(post(url(u"feedback.aspx"_s), ticket).status, 404);
    QVERIFY(m_service->setFault(u"*"_s, u"none"_s));
    QCOMPARE(get(url(update)).status, 200);
    QCOMPARE(post(url(u"feedback.aspx"_s), ticket).status, 404);
}

void TestDevFaults::everyEndpointTakesFaults_data()
{
    QTest::addColumn<QString>("endpoint");
    for (const char *endpoint :
         {"kvt_worker/process.aspx", "xdf/login.aspx", "xdf/catalog.aspx", "xdf/download.aspx",
          "patches/patches.aspx", "patches/patch_process.aspx", "stock/list.aspx", "stock/download.aspx",
          "feedback.aspx", "feedback_reply.aspx", "upload.aspx"})
        QTest::newRow(endpoint) << QString::fromLatin1(endpoint);
}

void TestDevFaults::everyEndpointTakesFaults()
{
    QFETCH(QString, endpoint);
    QVERIFY(!post(url(endpoint), "{}").body.contains("No such endpoint"));
    QVERIFY(m_service->setFault(endpoint, u"status:503:html"_s, 1));
    const Outcome switched = post(url(endpoint), "{}");
    QCOMPARE(switched.status, 503);
    QVERIFY(switched.body.startsWith("<!DOCTYPE html>"));
    QVERIFY(post(url(endpoint), "{}").body.startsWith('{'));
    QVERIFY(m_service->setFault(endpoint, u"short-body"_s));
    QVERIFY(post(url(endpoint), "{}").error != QNetworkReply::NoError);
}

void TestDevFaults::faultsOverHttp()
{
    const QString dev = url(u"../_dev/"_s).replace("/api/../"_L1, "/"_L1);
    const QByteArray order = R"({"endpoint":"updates/kvteditornew/update.json","fault":"hold","times":1})";
    QCOMPARE(post(dev + "faults"_L1, order).status, 200);
    QNetworkAccessManager manager;
    QNetworkReply *reply = manager.get(QNetworkRequest(QUrl(url(update))));
    QTRY_COMPARE(m_service->heldCount(), 1);
    const QJsonObject seen = get(dev + "requests"_L1).json();
    QCOMPARE(seen.value("total"_L1).toInt(), 1);
    QCOMPARE(seen.value("held"_L1).toInt(), 1);
    QCOMPARE(seen.value("counts"_L1)[QString::fromLatin1(updatePath)].toInt(), 1);
    QCOMPARE(post(dev + "release"_L1, "{}").status, 200);
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->error(), QNetworkReply::NoError);
    QCOMPARE(post(dev + "faults"_L1, R"({"endpoint":"*","fault":"status:500"})").status, 200);
    QCOMPARE(get(url(update)).status, 500);
    QCOMPARE(post(dev + "clear"_L1, "{}").status, 200);
    QCOMPARE(get(url(update)).status, 200);
}

void TestDevFaults::wrongOrdersOverHttp()
{
    const QString dev = m_service->apiBase().replace("/api/"_L1, "/_dev/faults"_L1);
    for (const QByteArray &order : {QByteArray("fault"), QByteArray(R"({"fault":"close"})"),
                                    QByteArray(R"({"endpoint":"*","fault":"rain"})")})
        QCOMPARE(post(dev, order).status, 400);
    QCOMPARE(get(url(update)).status, 200);
}

KVTEDITOR_TEST_MAIN(TestDevFaults)
#include "tst_DevFaults.moc"
