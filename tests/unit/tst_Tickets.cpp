#include "api/Tickets.h"

#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QJsonObject objectFrom(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class TestTickets : public QObject
{
    Q_OBJECT

private slots:
    void members_data();
    void members();
    void accepted_data();
    void accepted();
    void threadText_data();
    void threadText();
    void threadTextIsNotCut();
};

void TestTickets::members_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("all") << u"bug"_s << u"Ann"_s << u"a@b.example"_s << u"It fails."_s
                         << QByteArray(R"({"description":"It fails.","email":"a@b.example","name":"Ann",)"
                                       R"("os":"Windows","type":"bug","version":"4.0.2"})");
    QTest::newRow("all-empty") << u""_s << u""_s << u""_s << u""_s
                               << QByteArray(R"({"description":"","email":"nobody@x.invalid","name":"",)"
                                             R"("os":"Windows","type":"","version":"4.0.2"})");
    QTest::newRow("null-texts") << QString() << QString() << QString() << QString()
                                << QByteArray(R"({"description":"","email":"nobody@x.invalid","name":"",)"
                                              R"("os":"Windows","type":"","version":"4.0.2"})");
    QTest::newRow("not-trimmed") << u" bug "_s << u" "_s << u" "_s << u" \n"_s
                                 << QByteArray(R"({"description":" \n","email":" ","name":" ",)"
                                               R"("os":"Windows","type":" bug ","version":"4.0.2"})");
    QTest::newRow("hostile") << u"<b>"_s << u"R&D \"x\""_s << u"%1"_s << u"\u00e9\u202e"_s
                             << QByteArray("{\"description\":\"\xc3\xa9\xe2\x80\xae\",\"email\":\"%1\","
                                           "\"name\":\"R&D \\\"x\\\"\",\"os\":\"Windows\",\"type\":\"<b>\","
                                           "\"version\":\"4.0.2\"}");
}

void TestTickets::members()
{
    QFETCH(QString, type);
    QFETCH(QString, name);
    QFETCH(QString, email);
    QFETCH(QString, description);
    const QJsonObject ticket = supportTicket(type, name, email, description, u"nobody@x.invalid"_s);
    QTEST(QJsonDocument(ticket).toJson(QJsonDocument::Compact), "json");
}

void TestTickets::accepted_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("ticket");
    QTest::addColumn<bool>("reply");

    QTest::newRow("ok") << QByteArray(R"({"status":"ok"})") << true << true;
    QTest::newRow("ok-with-error") << QByteArray(R"({"status":"ok","error":"x"})") << true << true;
    QTest::newRow("ok-and-false") << QByteArray(R"({"status":"ok","ok":false})") << true << true;
    QTest::newRow("empty-object") << QByteArray("{}") << false << false;
    QTest::newRow("error") << QByteArray(R"({"status":"error"})") << false << false;
    QTest::newRow("capitals") << QByteArray(R"({"status":"OK"})") << false << false;
    QTest::newRow("blank-after") << QByteArray(R"({"status":"ok "})") << false << false;
    QTest::newRow("empty-status") << QByteArray(R"({"status":""})") << false << false;
    QTest::newRow("status-true") << QByteArray(R"({"status":true})") << false << false;
    QTest::newRow("status-number") << QByteArray(R"({"status":1})") << false << false;
    QTest::newRow("status-array") << QByteArray(R"({"status":["ok"]})") << false << false;
    QTest::newRow("ok-true") << QByteArray(R"({"ok":true})") << false << true;
    QTest::newRow("ok-true-beside-error") << QByteArray(R"({"status":"error","ok":true})") << false << true;
    QTest::newRow("ok-false") << QByteArray(R"({"ok":false})") << false << false;
    QTest::newRow("ok-text") << QByteArray(R"({"ok":"true"})") << false << false;
    QTest::newRow("ok-number") << QByteArray(R"({"ok":1})") << false << false;
    QTest::newRow("ok-null") << QByteArray(R"({"ok":null})") << false << false;
    QTest::newRow("ok-object") << QByteArray(R"({"ok":{"ok":true}})") << false << false;
    QTest::newRow("ok-in-capitals") << QByteArray(R"({"OK":true})") << false << false;
}

void TestTickets::accepted()
{
    QFETCH(QByteArray, answer);
    QTEST(ticketAccepted(objectFrom(answer)), "ticket");
    QTEST(replyAccepted(objectFrom(answer)), "reply");
}

void TestTickets::threadText_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty-object") << QByteArray("{}") << u"{\n}\n"_s;
    QTest::newRow("indented") << QByteArray(R"({"status":"ok","messages":[{"from":"us"},2]})")
                              << u"{\n    \"messages\": [\n        {\n            \"from\": \"us\"\n"
                                 u"        },\n        2\n    ],\n    \"status\": \"ok\"\n}\n"_s;
    QTest::newRow("not-ascii") << QByteArray("{\"a\":\"\xc3\xa9 \xe2\x86\x90 \xf0\x9f\x98\x80\"}")
                               << u"{\n    \"a\": \"\u00e9 \u2190 \U0001F600\"\n}\n"_s;
    QTest::newRow("markup") << QByteArray(R"({"a":"<img src='x'>&\n"})")
                            << u"{\n    \"a\": \"<img src='x'>&\\n\"\n}\n"_s;
}

void TestTickets::threadText()
{
    QFETCH(QByteArray, answer);
    QTEST(threadTextOf(objectFrom(answer)), "text");
}

void TestTickets::threadTextIsNotCut()
{
    const QString message(1'000'000, u'm');
    QCOMPARE(threadTextOf({{u"a"_s, message}}), u"{\n    \"a\": \""_s + message + u"\"\n}\n"_s);
}

KVTEDITOR_TEST_MAIN(TestTickets)
#include "tst_Tickets.moc"
