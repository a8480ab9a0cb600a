#include "DevService.h"
#include "Exchange.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

QByteArray bodyOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray historyOf(const QString &ticket)
{
    return bodyOf({{u"action"_s, u"history"_s}, {u"ticket_id"_s, ticket}});
}

} // namespace

class TestDevTickets : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void ticketsCountUp();
    void everyTypeIsTaken_data();
    void everyTypeIsTaken();
    void historyHoldsTheTicketAndItsReplies();
    void ticketsAreKeptApart();
    void uploadTakesAnyObject();
    void refuses_data();
    void refuses();

private:
    Outcome send(const QString &path, const QByteArray &body)
    {
        return post(m_service->apiBase() + path, body);
    }

    std::unique_ptr<DevService> m_service;
};

void TestDevTickets::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevTickets::cleanup()
{
    m_service.reset();
}

void TestDevTickets::ticketsCountUp()
{
    const QJsonObject first = send(u"feedback.aspx"_s, ticketOf("dev")).json();
    QCOMPARE(first.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(first.value("ticket_id"_L1).toString(), u"T-1001"_s);
    const QJsonObject second = send(u"feedback.aspx"_s, ticketOf("dev")).json();
    QCOMPARE(second.value("ticket_id"_L1).toString(), u"T-1002"_s);
    QCOMPARE(m_service->requests().last().body, ticketOf("dev"));
}

void TestDevTickets::everyTypeIsTaken_data()
{
    QTest::addColumn<QByteArray>("type");
    for (const char *type : {"general", "bug", "feature", "dev"})
        QTest::newRow(type) << QByteArray(type);
}

void TestDevTickets::everyTypeIsTaken()
{
    QFETCH(QByteArray, type);
    send(u"feedback.aspx"_s, ticketOf(type));
    const QJsonObject history = send(u"feedback_reply.aspx"_s, historyOf(u"T-1001"_s)).json();
    QCOMPARE(history.value("type"_L1).toString(), QString::fromLatin1(type));
}

void TestDevTickets::historyHoldsTheTicketAndItsReplies()
{
    send(u"feedback.aspx"_s, ticketOf("bug"));
    const QByteArray reply =
        bodyOf({{u"action"_s, u"reply"_s}, {u"ticket_id"_s, u"T-1001"_s}, {u"message"_s, u"R&D <b>"_s}});
    QCOMPARE(send(u"feedback_reply.aspx"_s, reply).json(), QJsonObject({{u"status"_s, u"ok"_s}}));
    const QJsonArray messages = {QJsonObject{{u"from"_s, u"A"_s}, {u"text"_s, u"x"_s}},
                                 QJsonObject{{u"from"_s, u"A"_s}, {u"text"_s, u"R&D <b>"_s}}};
    QCOMPARE(send(u"feedback_reply.aspx"_s, historyOf(u"T-1001"_s)).json(),
             QJsonObject({{u"status"_s, u"ok"_s},
                          {u"ticket_id"_s, u"T-1001"_s},
                          {u"type"_s, u"bug"_s},
                          {u"messages"_s, messages}}));
}

void TestDevTickets::ticketsAreKeptApart()
{
    send(u"feedback.aspx"_s, ticketOf("bug"));
    send(u"feedback.aspx"_s, ticketOf("feature"));
    send(u"feedback_reply.aspx"_s,
         bodyOf({{u"action"_s, u"reply"_s}, {u"ticket_id"_s, u"T-1002"_s}, {u"message"_s, u"m"_s}}));
    const QJsonObject first = send(u"feedback_reply.aspx"_s, historyOf(u"T-1001"_s)).json();
    const QJsonObject second = send(u"feedback_reply.aspx"_s, historyOf(u"T-1002"_s)).json();
    QCOMPARE(first.value("messages"_L1).toArray().size(), 1);
    QCOMPARE(second.value("messages"_L1).toArray().size(), 2);
}

void TestDevTickets::uploadTakesAnyObject()
{
    QCOMPARE(send(u"upload.aspx"_s, R"({"file":"x"})").json().value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(m_service->requestCount(u"upload.aspx"_s), 1);
}

void TestDevTickets::refuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    const QString open = u"feedback.aspx"_s;
    const QString follow = u"feedback_reply.aspx"_s;
    const QString noObject = u"Not a JSON object"_s;
    for (const QString &path : {open, follow, u"upload.aspx"_s}) {
        QTest::newRow(qPrintable(path + ":no-json"_L1)) << path << QByteArray("type=dev") << noObject;
        QTest::newRow(qPrintable(path + ":array"_L1)) << path << QByteArray("[]") << noObject;
    }
    const QJsonObject whole = QJsonDocument::fromJson(ticketOf("dev")).object();
    for (const QString &key : whole.keys()) {
        QJsonObject without = whole;
        without.remove(key);
        QTest::newRow(qPrintable("ticket-without:"_L1 + key)) << open << bodyOf(without) << "No "_L1 + key;
        without.insert(key, 1);
        QTest::newRow(qPrintable("ticket-number:"_L1 + key)) << open << bodyOf(without) << "No "_L1 + key;
    }
    QTest::newRow("other-type") << open << ticketOf("tea") << u"Unknown ticket type: tea"_s;
    QTest::newRow("no-action") << follow << QByteArray(R"({"ticket_id":"T-1001"})") << u"No action"_s;
    QTest::newRow("no-ticket") << follow << QByteArray(R"({"action":"history"})") << u"No ticket_id"_s;
    QTest::newRow("unknown-ticket") << follow << historyOf(u"T-1002"_s) << u"No such ticket: T-1002"_s;
    QTest::newRow("other-action") << follow << QByteArray(R"({"action":"sing","ticket_id":"T-1001"})")
                                  << u"Unknown action: sing"_s;
    QTest::newRow("no-message") << follow << QByteArray(R"({"action":"reply","ticket_id":"T-1001"})")
                                << u"No message"_s;
    QTest::newRow("empty-message") << follow
                                   << QByteArray(R"({"action":"reply","ticket_id":"T-1001","message":""})")
                                   << u"No message"_s;
}

void TestDevTickets::refuses()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    send(u"feedback.aspx"_s, ticketOf("dev"));
    const Outcome outcome = send(path, body);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"error"_s);
    QCOMPARE(outcome.json().value("error"_L1).toString(), error);
    const QJsonObject history = send(u"feedback_reply.aspx"_s, historyOf(u"T-1001"_s)).json();
    QCOMPARE(history.value("messages"_L1).toArray().size(), 1);
}

KVTEDITOR_TEST_MAIN(TestDevTickets)
#include "tst_DevTickets.moc"
