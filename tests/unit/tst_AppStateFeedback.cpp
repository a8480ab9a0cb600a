#include "api/ServiceConfig.h"
#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

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

    void submitTicket_members_data();
    void submitTicket_members();
    void submitTicket_outcome_data();
    void submitTicket_outcome();
    void submitTicket_showsNothingWhileSending();

    void loadTicket_members_data();
    void loadTicket_members();
    void loadTicket_outcome_data();
    void loadTicket_outcome();
    void loadTicket_longThreadIsNotCut();
    void loadTicket_announcesBeforeTheStatus();

    void replyTicket_members();
    void replyTicket_outcome_data();
    void replyTicket_outcome();
    void replyTicket_reloadsTheSameTicket();
    void replyTicket_failedReloadKeepsTheThread();

private:
    bool idle();

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

bool TestAppStateFeedback::idle()
{
    return waitUntil([this] { return m_state->findChildren<QNetworkAccessManager *>().isEmpty(); });
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
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/feedback.aspx HTTP/1.1"));
    QTEST(m_server->request(0).body, "body");
}

void TestAppStateFeedback::sendToDev_emptyNoteNamesTheOpenFile()
{
    m_state->sendToDev({}, {});
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    const QJsonObject without = QJsonDocument::fromJson(m_server->request(0).body).object();
    QCOMPARE(without.value(u"description"_s).toString(), u"Send to Dev from "_s);
    const QString placeholder = without.value(u"email"_s).toString();
    QVERIFY(placeholder.contains(u'@'));
    QVERIFY(placeholder.endsWith(u".invalid"_s) || placeholder.endsWith(u".example"_s)
            || placeholder.endsWith(u".test"_s) || placeholder.endsWith(u".localhost"_s));

    const QTemporaryDir dir;
    m_state->openKvt(makeFile(dir.filePath(u"truck.kvt"_s), "bytes"));
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    m_state->sendToDev(u""_s, u""_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 3);
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
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
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
    // "!" stands for one of Qt's error texts.
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
    WAIT_COMPARE(changes.count(), 1);
    QTEST(m_state->statusOK(), "level");
    if (status == u"!"_s) {
        QVERIFY(!m_state->status().isEmpty());
        QVERIFY(!m_state->status().startsWith(u"HTTP "_s));
    } else {
        QCOMPARE(m_state->status(), status);
    }
    QVERIFY(idle());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(changes.count(), 1);
}

void TestAppStateFeedback::sendToDev_twiceOpensTwoTickets()
{
    m_server->answerAlways(answerWith(R"({"status":"ok","ticket_id":"T"})"));
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    m_state->sendToDev(u"a@b.example"_s, u"note"_s);
    WAIT_COMPARE(changes.count(), 2);
    QCOMPARE(m_server->requestCount(), 2);
}

void TestAppStateFeedback::checkUpdate_showsProgressFirst()
{
    m_server->answerAlways(holdRequest());
    m_state->checkUpdate();
    QCOMPARE(m_state->status(), u"Checking for updates..."_s);
    QCOMPARE(m_state->statusOK(), 1);
    WAIT_COMPARE(m_server->requestCount(), 1);
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
    WAIT_COMPARE(m_state->status(), status);
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
    QTest::newRow("blank-in-link") << QByteArray("\"4.0.2.1\"") << QByteArray("https://x.example/kvt 5.zip")
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
    WAIT_COMPARE(m_desktop->opened.size(), 1);
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
    WAIT_COMPARE(m_state->statusOK(), 0);
    QVERIFY(m_state->status().startsWith(u"Update check failed: "_s));
    QVERIFY(m_state->status().size() > 21);
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

void TestAppStateFeedback::submitTicket_members_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("all") << QStringList{u"feature"_s, u"Ann"_s, u"a@b.example"_s, u"Please.\n<b>R&D</b>"_s}
                         << QByteArray(R"({"description":"Please.\n<b>R&D</b>","email":"a@b.example",)"
                                       R"("name":"Ann","os":"Windows","type":"feature","version":"4.0.2"})");
    QTest::newRow("nothing-checked") << QStringList{u"odd type"_s, u" "_s, u" "_s, u" "_s}
                                     << QByteArray(R"({"description":" ","email":" ","name":" ",)"
                                                   R"("os":"Windows","type":"odd type","version":"4.0.2"})");
    QTest::newRow("empty") << QStringList{u"bug"_s, {}, {}, {}}
                           << QByteArray(R"({"description":"","email":"PLACEHOLDER","name":"Windows user",)"
                                         R"("os":"Windows","type":"bug","version":"4.0.2"})");
}

void TestAppStateFeedback::submitTicket_members()
{
    QFETCH(QStringList, texts);
    QFETCH(QByteArray, body);
    m_state->submitTicket(texts.at(0), texts.at(1), texts.at(2), texts.at(3));
    QVERIFY(idle());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/feedback.aspx HTTP/1.1"));
    body.replace("PLACEHOLDER", serviceConfig().placeholderEmail.toUtf8());
    QCOMPARE(m_server->request(0).body, body);
}

void TestAppStateFeedback::submitTicket_outcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");

    const auto ok = [](const QByteArray &body) { return httpAnswer(200, body); };
    QTest::newRow("ticket") << ok(R"({"status":"ok","ticket_id":"T-7"})") << u"Ticket: T-7"_s << 1;
    QTest::newRow("ticket-number") << ok(R"({"status":"ok","ticket_id":42})") << u"Ticket: 42"_s << 1;
    QTest::newRow("ticket-missing") << ok(R"({"status":"ok"})") << u"Ticket: "_s << 1;
    QTest::newRow("ok-in-capitals") << ok(R"({"status":"OK","ticket_id":"T"})") << u""_s << 0;
    QTest::newRow("ok-true-is-for-replies") << ok(R"({"ok":true,"ticket_id":"T"})") << u""_s << 0;
    QTest::newRow("refused") << ok(R"({"status":"error","error":"No."})") << u"No."_s << 0;
    QTest::newRow("refused-without-reason") << ok("{}") << u""_s << 0;
    QTest::newRow("html") << ok("<html></html>") << u"HTTP 200: <html></html>"_s << 0;
    // "!" stands for one of Qt's error texts.
    QTest::newRow("500-json") << httpAnswer(500, R"({"status":"ok","ticket_id":"T"})") << u"!"_s << 0;
    QTest::newRow("closed-without-a-byte") << QByteArray() << u"!"_s << 0;
}

void TestAppStateFeedback::submitTicket_outcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    m_state->setStatus(u"before"_s, 1);
    m_server->answerAlways({answer});
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    QSignalSpy feedback(m_state.get(), &AppState::feedbackChanged);
    m_state->submitTicket(u"bug"_s, u"Ann"_s, u"a@b.example"_s, u"text"_s);
    QVERIFY(idle());
    QCOMPARE(changes.count(), 1);
    QTEST(m_state->statusOK(), "level");
    if (status == u"!"_s)
        QVERIFY(!m_state->status().isEmpty() && !m_state->status().startsWith(u"HTTP "_s));
    else
        QCOMPARE(m_state->status(), status);
    QCOMPARE(feedback.count(), 0);
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateFeedback::submitTicket_showsNothingWhileSending()
{
    m_server->answerAlways(holdRequest());
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->submitTicket({}, {}, {}, {});
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(status.count(), 0);
    QCOMPARE(busy.count(), 0);
}

void TestAppStateFeedback::loadTicket_members_data()
{
    QTest::addColumn<QString>("ticket");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("plain") << u"T-1001"_s << QByteArray(R"({"action":"history","ticket_id":"T-1001"})");
    QTest::newRow("as-typed") << u" 42 \""_s << QByteArray(R"({"action":"history","ticket_id":" 42 \""})");
    QTest::newRow("empty") << u""_s << QByteArray(R"({"action":"history","ticket_id":""})");
}

void TestAppStateFeedback::loadTicket_members()
{
    QFETCH(QString, ticket);
    m_state->loadTicket(ticket);
    QVERIFY(idle());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/feedback_reply.aspx HTTP/1.1"));
    QTEST(m_server->request(0).body, "body");
}

void TestAppStateFeedback::loadTicket_outcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("thread");

    const QString loaded = u"Loaded ticket."_s;
    const QString earlier = u"{\n    \"earlier\": 1\n}\n"_s;
    QTest::newRow("thread")
        << httpAnswer(200, R"({"status":"ok","messages":["a"]})") << loaded
        << u"{\n    \"messages\": [\n        \"a\"\n    ],\n    \"status\": \"ok\"\n}\n"_s;
    QTest::newRow("unknown-ticket") << httpAnswer(200, R"({"status":"error","error":"Unknown"})") << loaded
                                    << u"{\n    \"error\": \"Unknown\",\n    \"status\": \"error\"\n}\n"_s;
    QTest::newRow("empty-object") << httpAnswer(200, "{}") << loaded << u"{\n}\n"_s;
    QTest::newRow("markup") << httpAnswer(200, R"({"m":"<img src='http://127.0.0.1:1/x'>"})") << loaded
                            << u"{\n    \"m\": \"<img src='http://127.0.0.1:1/x'>\"\n}\n"_s;
    QTest::newRow("array") << httpAnswer(200, "[1]") << u"HTTP 200: [1]"_s << earlier;
    QTest::newRow("empty") << httpAnswer(200, {}) << u"HTTP 200: "_s << earlier;
    // "!" stands for one of Qt's error texts.
    QTest::newRow("404-json") << httpAnswer(404, R"({"status":"ok"})") << u"!"_s << earlier;
    QTest::newRow("closed-without-a-byte") << QByteArray() << u"!"_s << earlier;
}

void TestAppStateFeedback::loadTicket_outcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    QCOMPARE(m_state->threadText(), QString());
    m_server->answerNext(answerWith(R"({"earlier":1})"));
    m_state->loadTicket(u"T-1"_s);
    QVERIFY(idle());
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    QSignalSpy feedback(m_state.get(), &AppState::feedbackChanged);
    m_server->answerNext({answer});
    m_state->loadTicket(u"T-2"_s);
    QVERIFY(idle());
    const int level = status == u"Loaded ticket."_s ? 1 : 0;
    if (status == u"!"_s)
        QVERIFY(!m_state->status().isEmpty() && !m_state->status().startsWith(u"HTTP "_s));
    else
        QCOMPARE(m_state->status(), status);
    QCOMPARE(m_state->statusOK(), level);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(feedback.count(), level);
    QTEST(m_state->threadText(), "thread");
    QCOMPARE(m_server->requestCount(), 2);
}

void TestAppStateFeedback::loadTicket_longThreadIsNotCut()
{
    const QByteArray message(20'000, 'm');
    m_server->answerAlways(answerWith("{\"m\":\"" + message + "\"}"));
    m_state->loadTicket(u"T-1"_s);
    QVERIFY(idle());
    QCOMPARE(m_state->threadText(), u"{\n    \"m\": \""_s + QString::fromLatin1(message) + u"\"\n}\n"_s);
}

void TestAppStateFeedback::loadTicket_announcesBeforeTheStatus()
{
    QStringList seen;
    connect(m_state.get(), &AppState::feedbackChanged, this, [&] { seen.append(m_state->threadText()); });
    connect(m_state.get(), &AppState::statusChanged, this, [&] { seen.append(m_state->status()); });
    m_state->loadTicket(u"T-1"_s);
    QVERIFY(idle());
    QCOMPARE(seen, QStringList({u"{\n}\n"_s, u"Loaded ticket."_s}));
}

void TestAppStateFeedback::replyTicket_members()
{
    m_state->replyTicket(u" T-7 "_s, u"Thanks.\n\u00e9"_s);
    QVERIFY(idle());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/feedback_reply.aspx HTTP/1.1"));
    QCOMPARE(m_server->request(0).body,
             QByteArray("{\"action\":\"reply\",\"message\":\"Thanks.\\n\xc3\xa9\",\"ticket_id\":\" T-7 \"}"));
}

void TestAppStateFeedback::replyTicket_outcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    // What a failure shows; a success shows its own two texts.
    QTest::addColumn<QString>("failure");
    QTest::addColumn<bool>("taken");

    const auto ok = [](const QByteArray &body) { return httpAnswer(200, body); };
    QTest::newRow("status-ok") << ok(R"({"status":"ok"})") << QString() << true;
    QTest::newRow("ok-true") << ok(R"({"ok":true})") << QString() << true;
    QTest::newRow("ok-true-beside-error") << ok(R"({"ok":true,"error":"e"})") << QString() << true;
    QTest::newRow("ok-text") << ok(R"({"ok":"true"})") << u""_s << false;
    QTest::newRow("ok-number") << ok(R"({"ok":1})") << u""_s << false;
    QTest::newRow("status-in-capitals") << ok(R"({"status":"OK"})") << u""_s << false;
    QTest::newRow("refused") << ok(R"({"status":"error","error":"Closed."})") << u"Closed."_s << false;
    QTest::newRow("refused-without-reason") << ok("{}") << u""_s << false;
    QTest::newRow("html") << ok("<html>") << u"HTTP 200: <html>"_s << false;
    // "!" stands for one of Qt's error texts.
    QTest::newRow("500-ok") << httpAnswer(500, R"({"status":"ok"})") << u"!"_s << false;
    QTest::newRow("closed-without-a-byte") << QByteArray() << u"!"_s << false;
}

void TestAppStateFeedback::replyTicket_outcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, failure);
    QFETCH(bool, taken);
    m_state->setStatus(u"before"_s, 1);
    QStringList seen;
    connect(m_state.get(), &AppState::statusChanged, this, [&] {
        seen.append(m_state->status());
        QCOMPARE(m_state->statusOK(), taken ? 1 : 0);
    });
    QSignalSpy feedback(m_state.get(), &AppState::feedbackChanged);
    m_server->answerNext({answer});
    m_state->replyTicket(u"T-7"_s, u"Thanks."_s);
    QVERIFY(idle());
    QCOMPARE(m_server->requestCount(), taken ? 2 : 1);
    QCOMPARE(feedback.count(), taken ? 1 : 0);
    if (taken) {
        QCOMPARE(seen, QStringList({u"Reply sent."_s, u"Loaded ticket."_s}));
        return;
    }
    QCOMPARE(seen.size(), 1);
    if (failure == u"!"_s)
        QVERIFY(!seen.first().isEmpty() && !seen.first().startsWith(u"HTTP "_s));
    else
        QCOMPARE(seen.first(), failure);
    QCOMPARE(m_state->threadText(), QString());
}

void TestAppStateFeedback::replyTicket_reloadsTheSameTicket()
{
    m_server->answerNext(answerWith(R"({"status":"ok"})"));
    m_server->answerNext(holdRequest());
    m_state->replyTicket(u" T-7 "_s, u"Thanks."_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    QCOMPARE(m_state->status(), u"Reply sent."_s);
    QCOMPARE(m_state->threadText(), QString());
    QCOMPARE(m_server->request(1).requestLine(), QByteArray("POST /api/feedback_reply.aspx HTTP/1.1"));
    QCOMPARE(m_server->request(1).body, QByteArray(R"({"action":"history","ticket_id":" T-7 "})"));
    m_server->answerHeld(1, answerWith(R"({"messages":["Thanks."]})"));
    QVERIFY(idle());
    QCOMPARE(m_state->status(), u"Loaded ticket."_s);
    QCOMPARE(m_state->threadText(), u"{\n    \"messages\": [\n        \"Thanks.\"\n    ]\n}\n"_s);
}

void TestAppStateFeedback::replyTicket_failedReloadKeepsTheThread()
{
    m_server->answerNext(answerWith(R"({"earlier":1})"));
    m_state->loadTicket(u"T-7"_s);
    QVERIFY(idle());
    m_server->answerNext(answerWith(R"({"status":"ok"})"));
    m_server->answerNext(answerWith("gone"));
    m_state->replyTicket(u"T-7"_s, u"Thanks."_s);
    QVERIFY(idle());
    QCOMPARE(m_state->status(), u"HTTP 200: gone"_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->threadText(), u"{\n    \"earlier\": 1\n}\n"_s);
}

KVTEDITOR_TEST_MAIN(TestAppStateFeedback)
#include "tst_AppStateFeedback.moc"
