#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

class TestAppStateFeedback : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void sendToDev_members_data();
    void sendToDev_members();
    void sendToDev_emptyNoteNamesTheOpenFile();
    void sendToDev_showsNothingWhileSending();
    void sendToDev_outcome_data();
    void sendToDev_outcome();
    void sendToDev_twiceOpensTwoTickets();

    void checkUpdate_showsProgressFirst();
    void checkUpdate_outcome_data();
    void checkUpdate_outcome();
    void checkUpdate_opensTheLinkOnce_data();
    void checkUpdate_opensTheLinkOnce();
    void checkUpdate_transportFailure();

private:
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateFeedback::init()
{
    m_server = std::make_unique<RawHttpServer>();
    m_desktop = std::make_unique<UrlRecorder>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
}

void TestAppStateFeedback::cleanup()
{
    m_state.reset();
    m_server.reset();
    m_desktop.reset();
}

void TestAppStateFeedback::sendToDev_members_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("notes");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("both")
        << u"a@b.example"_s << u"It \"fails\"\n<b>"_s
        << QByteArray(R"({"description":"It \"fails\"\n<b>","email":"a@b.example",)"
                      R"("name":"Windows editor user","os":"Windows","type":"dev","version":"4.0.2"})");
    QTest::newRow("not-checked") << u"no address"_s << u" "_s
                                 << QByteArray(R"({"description":" ","email":"no address",)"
                                               R"("name":"Windows editor user","os":"Windows","type":"dev",)"
                                               R"("version":"4.0.2"})");
    QTest::newRow("not-ascii") << u"\u00e9@b.example"_s << u"%1"_s
                               << QByteArray(
                                      "{\"description\":\"%1\",\"email\":\"\xc3\xa9@b.example\","
                                      "\"name\":\"Windows editor user\",\"os\":\"Windows\",\"type\":\"dev\","
                                      "\"version\":\"4.0.2\"}");
}

void TestAppStateFeedback::sendToDev_members()
{
    QFETCH(QString, email);
    QFETCH(QString, notes);
    m_state->sendToDev(email, notes);
    QTRY_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/feedback.aspx HTTP/1.1"));
    QTEST(m_server->request(0).body, "body");
}

void TestAppStateFeedback::sendToDev_emptyNoteNamesTheOpenFile()
{
    m_state->sendToDev({}, {});
    QTRY_COMPARE(m_server->completeRequestCount(), 1);
    const QJsonObject without = QJsonDocument::fromJson(m_server->request(0).body).object();
    QCOMPARE(without.value(u"description"_s).toString(), u"Send to Dev from "_s);
    const QString placeholder = without.value(u"email"_s).toString();
    QVERIFY(placeholder.contains(u'@'));
    QVERIFY(placeholder.endsWith(u".invalid"_s) || placeholder.endsWith(u".example"_s)
            || placeholder.endsWith(u".test"_s) || placeholder.endsWith(u".localhost"_s));

    const QTemporaryDir dir;
    QFile file(dir.filePath(u"truck.kvt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("bytes");
    file.close();
    m_state->openKvt(dir.filePath(u"truck.kvt"_s));
    QTRY_COMPARE(m_server->completeRequestCount(), 2);
    m_state->sendToDev({}, {});
    QTRY_COMPARE(m_server->completeRequestCount(), 3);
    const QJsonObject with = QJsonDocument::fromJson(m_server->request(2).body).object();
    QCOMPARE(with.value(u"description"_s).toString(), u"Send to Dev from truck.kvt"_s);
    QCOMPARE(with.size(), 6);
}

void TestAppStateFeedback::sendToDev_showsNothingWhileSending()
{
    m_server->answerAlways(holdRequest());
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    QTRY_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(status.count(), 0);
    QCOMPARE(busy.count(), 0);
}

void TestAppStateFeedback::sendToDev_outcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");

    const auto ok = [](const QByteArray &body) { return httpAnswer(200, body); };
    QTest::newRow("ticket") << ok(R"({"status":"ok","ticket_id":"T-7"})") << u"Ticket created: T-7"_s << 1;
    QTest::newRow("ticket-number") << ok(R"({"status":"ok","ticket_id":42})") << u"Ticket created: 42"_s << 1;
    QTest::newRow("ticket-missing") << ok(R"({"status":"ok"})") << u"Ticket created: "_s << 1;
    QTest::newRow("ticket-null") << ok(R"({"status":"ok","ticket_id":null})") << u"Ticket created: "_s << 1;
    QTest::newRow("ok-in-capitals") << ok(R"({"status":"OK","ticket_id":"T"})") << u"Send failed"_s << 0;
    QTest::newRow("ok-boolean") << ok(R"({"status":true})") << u"Send failed"_s << 0;
    QTest::newRow("refused") << ok(R"({"status":"error","error":"No."})") << u"No."_s << 0;
    QTest::newRow("refused-message-not-read") << ok(R"({"message":"m"})") << u"Send failed"_s << 0;
    QTest::newRow("refused-error-wrong-type") << ok(R"({"error":["No."]})") << u"Send failed"_s << 0;
    QTest::newRow("empty-object") << ok("{}") << u"Send failed"_s << 0;
    QTest::newRow("html") << ok("<html></html>") << u"HTTP 200: <html></html>"_s << 0;
    QTest::newRow("array") << ok("[1]") << u"HTTP 200: [1]"_s << 0;
    QTest::newRow("empty") << ok({}) << u"HTTP 200: "_s << 0;
    QTest::newRow("markup-as-it-is") << ok(R"({"error":"<b>R&D</b> %1"})") << u"<b>R&D</b> %1"_s << 0;
    // "!" stands for an error text of the network library's own.
    QTest::newRow("500-json") << httpAnswer(500, R"({"status":"ok","ticket_id":"T"})") << u"!"_s << 0;
    QTest::newRow("401") << httpAnswer(401, "no", "WWW-Authenticate: Basic realm=\"x\"\r\n") << u"!"_s << 0;
    QTest::newRow("closed-without-a-byte") << QByteArray() << u"!"_s << 0;
}

void TestAppStateFeedback::sendToDev_outcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    m_server->answerAlways({answer});
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    QTRY_COMPARE(changes.count(), 1);
    QTEST(m_state->statusOK(), "level");
    if (status == u"!"_s) {
        QVERIFY(!m_state->status().isEmpty());
        QVERIFY(!m_state->status().startsWith(u"HTTP "_s));
    } else {
        QCOMPARE(m_state->status(), status);
    }
    QTRY_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(changes.count(), 1);
}

void TestAppStateFeedback::sendToDev_twiceOpensTwoTickets()
{
    m_server->answerAlways(answerWith(R"({"status":"ok","ticket_id":"T"})"));
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    QTRY_COMPARE(changes.count(), 2);
    QCOMPARE(m_server->requestCount(), 2);
}

void TestAppStateFeedback::checkUpdate_showsProgressFirst()
{
    m_server->answerAlways(holdRequest());
    m_state->checkUpdate();
    QCOMPARE(m_state->status(), u"Checking for updates..."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QTRY_COMPARE(m_server->requestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(),
             QByteArray("GET /api/updates/kvteditornew/update.json HTTP/1.1"));
}

void TestAppStateFeedback::checkUpdate_outcome_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");

    const QString noVersion = u"Update check: the server did not report a version."_s;
    const QString newest = u"You are running the latest version (4.0.2)."_s;
    QTest::newRow("same") << QByteArray(R"({"latest_version":"4.0.2"})") << newest << 1;
    QTest::newRow("older") << QByteArray(R"({"latest_version":"4.0.1","download_url":"http://x.example/"})")
                           << newest << 1;
    QTest::newRow("newer-no-link") << QByteArray(R"({"latest_version":"4.1"})")
                                   << u"Update 4.1 is available but no download link was provided."_s << 0;
    QTest::newRow("no-version") << QByteArray(R"({"download_url":"http://x.example/"})") << noVersion << 0;
    QTest::newRow("html") << QByteArray("<html></html>") << noVersion << 0;
    QTest::newRow("array") << QByteArray("[]") << noVersion << 0;
    QTest::newRow("empty") << QByteArray() << noVersion << 0;
}

void TestAppStateFeedback::checkUpdate_outcome()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, status);
    m_server->answerAlways(answerWith(body));
    m_state->checkUpdate();
    QTRY_COMPARE(m_state->status(), status);
    QTEST(m_state->statusOK(), "level");
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

void TestAppStateFeedback::checkUpdate_opensTheLinkOnce_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QByteArray>("link");
    QTest::addColumn<QByteArray>("opened");

    QTest::newRow("text") << QByteArray("\"4.0.10\"") << QByteArray("https://x.example/kvt.zip")
                          << QByteArray("https://x.example/kvt.zip");
    QTest::newRow("number") << QByteArray("5") << QByteArray("http://x.example/?a=1&b=%20")
                            << QByteArray("http://x.example/?a=1&b=%20");
    QTest::newRow("lenient") << QByteArray("\"4.0.2.1\"") << QByteArray("https://x.example/kvt 5.zip")
                             << QByteArray("https://x.example/kvt%205.zip");
}

void TestAppStateFeedback::checkUpdate_opensTheLinkOnce()
{
    QFETCH(QByteArray, version);
    QFETCH(QByteArray, link);
    QFETCH(QByteArray, opened);
    m_server->answerAlways(
        answerWith("{\"latest_version\":" + version + ",\"download_url\":\"" + link + "\"}"));
    m_state->checkUpdate();
    QTRY_COMPARE(m_desktop->opened.size(), 1);
    QCOMPARE(m_desktop->opened.first().toEncoded(), opened);
    const QString number = QString::fromUtf8(version).remove(u'"');
    QCOMPARE(m_state->status(), u"Version "_s + number + u" is available. Opening the download..."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateFeedback::checkUpdate_transportFailure()
{
    m_server->answerAlways({httpAnswer(404, R"({"latest_version":"5","download_url":"http://x.example/"})")});
    m_state->checkUpdate();
    QTRY_COMPARE(m_state->statusOK(), 0);
    QVERIFY(m_state->status().startsWith(u"Update check failed: "_s));
    QVERIFY(m_state->status().size() > 21);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

KVTEDITOR_TEST_MAIN(TestAppStateFeedback)
#include "tst_AppStateFeedback.moc"
