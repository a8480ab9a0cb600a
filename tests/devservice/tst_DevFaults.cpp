#include "Faults.h"
#include "ServiceTest.h"
#include "support/TestMain.h"

#include <QSet>
#include <QTcpSocket>
#include <QtEndian>

#include <future>

using namespace Qt::StringLiterals;

namespace {

const QString update = u"updates/kvteditornew/update.json"_s;
const QByteArray updatePath = "/api/updates/kvteditornew/update.json";
const QByteArray okJson = R"({"status":"ok"})";
const QByteArray ticket = ticketOf("dev");
constexpr qsizetype mebibyte = qsizetype(1) << 20;

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
    const qsizetype at = answer.indexOf("Content-Length: ") + 16;
    return answer.mid(at, answer.indexOf("\r\n", at) - at).toLongLong();
}

} // namespace

class TestDevFaults : public ServiceTest
{
    Q_OBJECT

private slots:
    void wireBytes_data();
    void wireBytes();
    void everyKindIsTested();
    void unknownFaultsAreRefused();
    void heldUntilReleased();
    void shortBodyBreaksOffAfterTheWork();
    void slowBodyComesInPieces();
    void largeBodies();
    void endlessBodyEndsWithTheClient();
    void redirects();
    void packedBodies();
    void timesCountDown();
    void faultOfEveryEndpoint();
    void ordersOverHttp();
    void wrongOrdersOverHttp();
};

void TestDevFaults::wireBytes_data()
{
    QTest::addColumn<QByteArray>("inHead");
    QTest::addColumn<QByteArray>("body");
    const auto row = [](const char *fault, const QByteArray &inHead, const QByteArray &body) {
        QTest::newRow(fault) << inHead << body;
    };
    const QByteArray error = R"({"status":"error","message":"Switched fault","error":"Switched fault"})";
    const QByteArray html = "<!DOCTYPE html><html><body><h1>Gateway</h1></body></html>\n";
    row("status:404", "HTTP/1.1 404 ", error);
    row("status:500:json", "Content-Type: application/json\r\n", error);
    row("status:500:html", "Content-Type: text/html\r\n", html);
    row("status:503:empty", "HTTP/1.1 503 ", "");
    row("status:999:empty", "HTTP/1.1 999 ", "");
    row("unauthorized", "WWW-Authenticate: Basic", "");
    row("html-200", "Content-Type: text/html\r\n", html);
    row("bad-json", "Content-Length: 15\r\n", R"({"status":"ok",)");
    row("trailing-json", "HTTP/1.1 200 ", okJson + " and more");
    row("array-json", "HTTP/1.1 200 ", "[1,2,3]");
    row("deep-json", "Content-Length: 100000\r\n", QByteArray(100'000, '['));
    row("bom-json", "HTTP/1.1 200 ", "\xef\xbb\xbf" + okJson);
    row("empty-body", "Content-Length: 0\r\n", "");
    row("long-header", "X-Long: " + QByteArray(200 * 1024, 'x') + "\r\n", okJson);
    row("many-headers", QByteArray("X-Many: one\r\n").repeated(200), okJson);
    row("bad-gzip", "Content-Encoding: gzip\r\n", okJson);
}

void TestDevFaults::wireBytes()
{
    QFETCH(QByteArray, inHead);
    QFETCH(QByteArray, body);
    QVERIFY(m_service->setFault(update, QString::fromLatin1(QTest::currentDataTag())));
    const QByteArray answer = rawGet(*m_service, updatePath);
    QVERIFY2(headOf(answer).contains(inHead), headOf(answer).left(300).constData());
    QCOMPARE(bodyOf(answer), body);
    QCOMPARE(announced(answer), body.size());
    QCOMPARE(m_service->requestCount(update), 1);
    m_service->clearFaults();
    QVERIFY(rawGet(*m_service, updatePath).contains("latest_version"));
}

void TestDevFaults::everyKindIsTested()
{
    const QSet<QString> here = {u"status"_s,     u"unauthorized"_s,  u"html-200"_s,   u"bad-json"_s,
                                u"bom-json"_s,   u"trailing-json"_s, u"array-json"_s, u"deep-json"_s,
                                u"empty-body"_s, u"long-header"_s,   u"bad-gzip"_s,   u"many-headers"_s};
    const QSet<QString> below = {u"hold"_s,          u"slow"_s,          u"short-body"_s,  u"body-64m"_s,
                                 u"json-64m"_s,      u"endless-body"_s,  u"cut-deflate"_s, u"deflate-bomb"_s,
                                 u"redirect-loop"_s, u"redirect-plain"_s};
    QSet<QString> kinds;
    for (const FaultKind &kind : faultKinds())
        kinds.insert(kind.name);
    QCOMPARE(kinds, here + below);
}

void TestDevFaults::unknownFaultsAreRefused()
{
    for (const char *fault : {"", "rain", "hold:1", "status", "status:", "status:abc", "status:99",
                              "status:1000", "status:404:xml", "status:404:json:more"})
        QVERIFY2(!m_service->setFault(update, QString::fromLatin1(fault)), fault);
    QVERIFY(rawGet(*m_service, updatePath).contains("latest_version"));
}

void TestDevFaults::heldUntilReleased()
{
    QVERIFY(m_service->setFault(update, u"hold"_s, 1));
    auto held = std::async(std::launch::async, [this] { return rawGet(*m_service, updatePath); });
    QVERIFY(m_service->awaitHeld(1));
    QVERIFY(rawGet(*m_service, updatePath).contains("latest_version"));
    QCOMPARE(m_service->heldCount(), 1);
    m_service->release();
    QVERIFY(held.get().contains("latest_version"));
    QCOMPARE(m_service->heldCount(), 0);
    QCOMPARE(m_service->requestCount(update), 2);
}

void TestDevFaults::shortBodyBreaksOffAfterTheWork()
{
    const QString endpoint = u"feedback.aspx"_s;
    QVERIFY(m_service->setFault(endpoint, u"status:500"_s, 1));
    QCOMPARE(post(url(endpoint), ticket).status, 500);
    QVERIFY(m_service->setFault(endpoint, u"short-body"_s));
    const QByteArray cut = rawExchange(*m_service,
                                       "POST /api/feedback.aspx HTTP/1.1\r\nHost: x\r\nContent-Length: "
                                           + QByteArray::number(ticket.size()) + "\r\n\r\n" + ticket);
    QVERIFY(cut.startsWith("HTTP/1.1 200 "));
    QCOMPARE(bodyOf(cut).size(), announced(cut) / 2);
    m_service->clearFaults();
    QCOMPARE(post(url(endpoint), ticket).json().value("ticket_id"_L1).toString(), u"T-1002"_s);
}

void TestDevFaults::slowBodyComesInPieces()
{
    QVERIFY(m_service->setFault(update, u"slow"_s));
    const Outcome outcome = get(url(update));
    QVERIFY2(outcome.pieces > 1, "the body came in one piece");
    QVERIFY(outcome.json().contains("latest_version"_L1));
}

void TestDevFaults::largeBodies()
{
    QVERIFY(m_service->setFault(update, u"body-64m"_s));
    QVERIFY(get(url(update)).body == QByteArray(64 * mebibyte, 'K'));
    QVERIFY(m_service->setFault(update, u"json-64m"_s));
    QCOMPARE(get(url(update)).json().value("padding"_L1).toString().size(), 64 * mebibyte);
}

void TestDevFaults::endlessBodyEndsWithTheClient()
{
    QVERIFY(m_service->setFault(update, u"endless-body"_s));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, m_service->port());
    client.write("GET " + updatePath + " HTTP/1.1\r\nHost: x\r\n\r\n");
    while (client.bytesAvailable() < 10'000'000)
        QVERIFY(client.waitForReadyRead(60'000));
    client.abort();
    m_service->stop();
    QCOMPARE(m_service->requestCount(update), 1);
}

void TestDevFaults::redirects()
{
    for (const QString &fault : {u"redirect-loop"_s, u"redirect-plain"_s}) {
        QVERIFY(m_service->setFault(update, fault));
        const QByteArray answer = rawGet(*m_service, updatePath);
        QVERIFY(answer.startsWith("HTTP/1.1 302 "));
        QVERIFY(answer.contains("Location: " + url(update).toLatin1() + "\r\n"));
    }
    QCOMPARE(get(url(update)).error, QNetworkReply::TooManyRedirectsError);
    QVERIFY(m_service->requestCount(update) > 10);
}

void TestDevFaults::packedBodies()
{
    // qUncompress() expects the uncompressed size before the data.
    const auto unpacked = [](const QByteArray &body, quint32 size) {
        QByteArray head(4, '\0');
        qToBigEndian(size, head.data());
        return qUncompress(head + body);
    };
    QVERIFY(m_service->setFault(update, u"cut-deflate"_s));
    const QByteArray cut = rawGet(*m_service, updatePath);
    QVERIFY(cut.contains("Content-Encoding: deflate\r\n"));
    QCOMPARE(bodyOf(cut).size(), announced(cut) / 2);
    QVERIFY(bodyOf(cut).startsWith('\x78'));
    QVERIFY(m_service->setFault(update, u"deflate-bomb"_s));
    const QByteArray bomb = rawGet(*m_service, updatePath);
    QCOMPARE(bodyOf(bomb).size(), announced(bomb));
    QVERIFY(bodyOf(bomb).size() < 4'000'000);
    QCOMPARE(unpacked(bodyOf(bomb), quint32(200 * mebibyte)).size(), 200 * mebibyte);
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

void TestDevFaults::ordersOverHttp()
{
    const QString dev = m_service->apiBase().replace("/api/"_L1, "/_dev/"_L1);
    const QByteArray order = R"({"endpoint":"updates/kvteditornew/update.json","fault":"hold","times":1})";
    QCOMPARE(post(dev + "faults"_L1, order).status, 200);
    auto held = std::async(std::launch::async, [this] { return rawGet(*m_service, updatePath); });
    QVERIFY(m_service->awaitHeld(1));
    QCOMPARE(get(dev + "requests"_L1).json(),
             QJsonObject({{u"total"_s, 1},
                          {u"connections"_s, 3},
                          {u"held"_s, 1},
                          {u"counts"_s, QJsonObject{{QString::fromLatin1(updatePath), 1}}}}));
    QCOMPARE(post(dev + "release"_L1, {}).status, 200);
    QVERIFY(held.get().contains("latest_version"));
    QCOMPARE(post(dev + "faults"_L1, R"({"endpoint":"*","fault":"status:500"})").status, 200);
    QCOMPARE(get(url(update)).status, 500);
    QCOMPARE(post(dev + "clear"_L1, {}).status, 200);
    QCOMPARE(get(url(update)).status, 200);
}

void TestDevFaults::wrongOrdersOverHttp()
{
    const QString dev = m_service->apiBase().replace("/api/"_L1, "/_dev/faults"_L1);
    for (const QByteArray order : {"fault", R"({"fault":"slow"})", R"({"endpoint":"*","fault":"rain"})"})
        QCOMPARE(post(dev, order).status, 400);
    QCOMPARE(get(url(update)).status, 200);
}

KVTEDITOR_TEST_MAIN(TestDevFaults)
#include "tst_DevFaults.moc"
