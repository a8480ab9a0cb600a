#include "SampleContainer.h"
#include "ServiceTest.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QJsonObject historyOf(const QString &ticket)
{
    return {{u"action"_s, u"history"_s}, {u"ticket_id"_s, ticket}};
}

QJsonObject replyTo(const QString &ticket, const QString &message)
{
    return {{u"action"_s, u"reply"_s}, {u"ticket_id"_s, ticket}, {u"message"_s, message}};
}

} // namespace

/// Stock files and tickets.
class TestDevEndpoints : public ServiceTest
{
    Q_OBJECT

private slots:
    void everyFileIsListed();
    void rowHasWhatTheEditorReads();
    void filters_data();
    void filters();
    void sorting_data();
    void sorting();
    void everyFileCanBeDownloaded();
    void refusedSearches_data();
    void refusedSearches();
    void refusedDownloads();

    void ticketsCountUpAndAreKeptApart();
    void everyTypeIsTaken();
    void uploadTakesAnyObject();
    void ticketRefusals_data();
    void ticketRefusals();

private:
    QJsonArray rows(const QJsonObject &query)
    {
        return send(u"stock/list.aspx"_s, query).json().value("files"_L1).toArray();
    }
    Outcome download(const Fields &fields) { return postForm(url(u"stock/download.aspx"_s), fields, {}); }
    QJsonArray messages(const QString &ticket)
    {
        return send(u"feedback_reply.aspx"_s, historyOf(ticket)).json().value("messages"_L1).toArray();
    }
};

void TestDevEndpoints::everyFileIsListed()
{
    QJsonObject empty;
    for (const char *key :
         {"make", "file_type", "folder", "module_type", "model", "os", "keyword", "sort", "sort_dir"})
        empty.insert(QLatin1StringView(key), QString());
    const QJsonArray all = rows(empty);
    QCOMPARE(rows({}), all);
    QSet<QString> identifiers;
    QSet<QString> makes;
    QSet<QString> names;
    for (const QJsonValue row : all) {
        identifiers.insert(row["id"_L1].toString());
        makes.insert(row["make"_L1].toString());
        names.insert(row["filename"_L1].toString());
    }
    QCOMPARE(identifiers.size(), 60);
    QCOMPARE(names.size(), 60);
    QCOMPARE(makes.size(), 10);
    QVERIFY(makes.contains(QString()));
}

void TestDevEndpoints::rowHasWhatTheEditorReads()
{
    QJsonObject row = rows({{u"os"_s, u"12650014"_s}}).first().toObject();
    QVERIFY(row.take("size"_L1).toInt() > 3000);
    QCOMPARE(row,
             QJsonObject({{u"id"_s, u"stock-002"_s},
                          {u"filename"_s, u"2010_SIERRA_12650014.kvt"_s},
                          {u"os"_s, u"12650014"_s},
                          {u"module"_s, u"ECM"_s},
                          {u"year"_s, 2010},
                          {u"make"_s, u"GMC"_s},
                          {u"model"_s, u"SIERRA"_s},
                          {u"folder"_s, u"stock/GMC/2010"_s},
                          {u"file_type"_s, u"kvt"_s}}));
}

void TestDevEndpoints::filters_data()
{
    QTest::addColumn<QJsonObject>("query");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("part");
    QTest::addColumn<int>("count");
    const auto row = [](const char *name, const char *filter, const char *value, const char *key, int count) {
        const QString text = QString::fromLatin1(value);
        QTest::newRow(name) << QJsonObject{{QLatin1StringView(filter), text}} << QString::fromLatin1(key)
                            << text << count;
    };
    row("make", "make", "GMC", "make", 6);
    row("make-part-lower", "make", "chev", "make", 11);
    row("type-kvt", "file_type", "kvt", "file_type", 27);
    row("type-ctz", "file_type", "ctz", "file_type", 11);
    row("type-bin", "file_type", "bin", "file_type", 11);
    row("type-ford", "file_type", "FORD", "file_type", 11);
    row("folder", "folder", "stock/GMC/", "folder", 6);
    row("module", "module_type", "TCM", "module", 14);
    row("model", "model", "corvette", "model", 5);
    row("os", "os", "126500", "os", 5);
    row("keyword-in-name", "keyword", "_SIERRA_", "filename", 6);
    row("keyword-in-os", "keyword", "12650014", "os", 1);
    row("keyword-in-module", "keyword", "fpcm", "module", 14);
    row("nothing", "make", "VOXMOBILE", "make", 0);
    row("type-is-whole", "file_type", "kv", "file_type", 0);
    QTest::newRow("two-filters") << QJsonObject{{u"make"_s, u"GMC"_s}, {u"file_type"_s, u"kvt"_s}}
                                 << u"make"_s << u"GMC"_s << 3;
}

void TestDevEndpoints::filters()
{
    QFETCH(QJsonObject, query);
    QFETCH(QString, key);
    QFETCH(QString, part);
    QFETCH(int, count);
    const QJsonArray found = rows(query);
    for (const QJsonValue row : found)
        QVERIFY(row[key].toString().contains(part, Qt::CaseInsensitive));
    QCOMPARE(found.size(), count);
}

void TestDevEndpoints::sorting_data()
{
    QTest::addColumn<QString>("key");
    for (const char *sort : {"make", "os", "filename", "size", "year"})
        QTest::newRow(sort) << QString::fromLatin1(sort);
    QTest::newRow("module_type") << u"module"_s;
}

void TestDevEndpoints::sorting()
{
    QFETCH(QString, key);
    const QString sort = QString::fromLatin1(QTest::currentDataTag());
    const auto rises = [&key](const QJsonValue &a, const QJsonValue &b) {
        const QJsonValue left = a[key];
        const QJsonValue right = b[key];
        return left.isDouble() ? left.toInt() < right.toInt() : left.toString() < right.toString();
    };
    const QJsonArray unsorted = rows({});
    const QJsonArray rising = rows({{u"sort"_s, sort}, {u"sort_dir"_s, u"asc"_s}});
    const QJsonArray falling = rows({{u"sort"_s, sort}, {u"sort_dir"_s, u"desc"_s}});
    QCOMPARE(rising.size(), 60);
    QCOMPARE(falling.size(), 60);
    QVERIFY(!std::is_sorted(unsorted.begin(), unsorted.end(), rises));
    QVERIFY(std::is_sorted(rising.begin(), rising.end(), rises));
    QVERIFY(std::is_sorted(falling.begin(), falling.end(),
                           [&rises](const QJsonValue &a, const QJsonValue &b) { return rises(b, a); }));
    QCOMPARE(rows({{u"sort"_s, sort}}), rising);
}

void TestDevEndpoints::everyFileCanBeDownloaded()
{
    for (const QJsonValue row : rows({})) {
        const Outcome outcome = download({{"id", row["id"_L1].toString().toLatin1()}});
        QCOMPARE(outcome.status, 200);
        QCOMPARE(outcome.contentType, "application/octet-stream");
        QCOMPARE(outcome.body.size(), row["size"_L1].toInt());
        QVERIFY(outcome.json().isEmpty());
        const QString type = row["file_type"_L1].toString();
        const std::optional<SampleTune> tune = SampleContainer::read(outcome.body);
        QCOMPARE(tune.has_value(), type == "kvt"_L1 || type == "ctz"_L1);
        if (!tune)
            continue;
        QVERIFY(row["filename"_L1].toString().endsWith(u'.' + type));
        QCOMPARE(tune->modules.first().mainOs, row["os"_L1].toString());
        QCOMPARE(tune->modules.first().title, row["module"_L1].toString());
    }
}

void TestDevEndpoints::refusedSearches_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    QTest::newRow("not-json") << QByteArray("make=GMC") << u"Not a JSON object"_s;
    QTest::newRow("array") << QByteArray("[]") << u"Not a JSON object"_s;
    QTest::newRow("number") << QByteArray(R"({"make":1})") << u"Not a text: make"_s;
    QTest::newRow("null") << QByteArray(R"({"sort_dir":null})") << u"Not a text: sort_dir"_s;
    QTest::newRow("other-sort") << QByteArray(R"({"sort":"price"})") << u"Unknown order: price "_s;
    QTest::newRow("other-direction") << QByteArray(R"({"sort":"make","sort_dir":"up"})")
                                     << u"Unknown order: make up"_s;
}

void TestDevEndpoints::refusedSearches()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    const Outcome outcome = post(url(u"stock/list.aspx"_s), body);
    QCOMPARE(outcome.status, 400);
    QCOMPARE(outcome.refusal(), error);
}

void TestDevEndpoints::refusedDownloads()
{
    QCOMPARE(download({{"name", "x"}}).refusal(), u"No id"_s);
    QCOMPARE(download({{"id", ""}}).refusal(), u"No such stock file: "_s);
    QCOMPARE(download({{"id", "stock-999"}}).refusal(), u"No such stock file: stock-999"_s);
}

void TestDevEndpoints::ticketsCountUpAndAreKeptApart()
{
    for (const QString &id : {u"T-1001"_s, u"T-1002"_s}) {
        const Outcome opened = post(url(u"feedback.aspx"_s), ticketOf("bug"));
        QCOMPARE(opened.json(), QJsonObject({{u"status"_s, u"ok"_s}, {u"ticket_id"_s, id}}));
    }
    QCOMPARE(m_service->requests().last().body, ticketOf("bug"));
    QCOMPARE(send(u"feedback_reply.aspx"_s, replyTo(u"T-1002"_s, u"R&D <b>"_s)).json(),
             QJsonObject({{u"status"_s, u"ok"_s}}));
    QCOMPARE(messages(u"T-1001"_s).size(), 1);
    const QJsonArray both = {QJsonObject{{u"from"_s, u"A"_s}, {u"text"_s, u"x"_s}},
                             QJsonObject{{u"from"_s, u"A"_s}, {u"text"_s, u"R&D <b>"_s}}};
    QCOMPARE(send(u"feedback_reply.aspx"_s, historyOf(u"T-1002"_s)).json(),
             QJsonObject({{u"status"_s, u"ok"_s},
                          {u"ticket_id"_s, u"T-1002"_s},
                          {u"type"_s, u"bug"_s},
                          {u"messages"_s, both}}));
}

void TestDevEndpoints::everyTypeIsTaken()
{
    int last = 1000;
    for (const QByteArray type : {"general", "bug", "feature", "dev"}) {
        const QString id = post(url(u"feedback.aspx"_s), ticketOf(type)).json()["ticket_id"_L1].toString();
        QCOMPARE(id, u"T-%1"_s.arg(++last));
        const QJsonObject history = send(u"feedback_reply.aspx"_s, historyOf(id)).json();
        QCOMPARE(history.value("type"_L1).toString(), QString::fromLatin1(type));
    }
}

void TestDevEndpoints::uploadTakesAnyObject()
{
    QCOMPARE(post(url(u"upload.aspx"_s), R"({"file":"x"})").json(), QJsonObject({{u"status"_s, u"ok"_s}}));
    QCOMPARE(m_service->requestCount(u"upload.aspx"_s), 1);
}

void TestDevEndpoints::ticketRefusals_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    const QString open = u"feedback.aspx"_s;
    const QString follow = u"feedback_reply.aspx"_s;
    for (const QString &path : {open, follow, u"upload.aspx"_s})
        QTest::newRow(qPrintable(path + ":array"_L1)) << path << QByteArray("[]") << u"Not a JSON object"_s;
    const QJsonObject whole = QJsonDocument::fromJson(ticketOf("dev")).object();
    for (const QString &key : whole.keys()) {
        QJsonObject changed = whole;
        changed.insert(key, 1);
        QTest::newRow(qPrintable("ticket-number:"_L1 + key))
            << open << QJsonDocument(changed).toJson() << "No "_L1 + key;
    }
    QTest::newRow("other-type") << open << ticketOf("tea") << u"Unknown ticket type: tea"_s;
    const auto row = [&follow](const char *name, const QJsonObject &body, const char *error) {
        QTest::newRow(name) << follow << QJsonDocument(body).toJson() << QString::fromLatin1(error);
    };
    const QString first = u"T-1001"_s;
    row("no-action", {{u"ticket_id"_s, first}}, "No action");
    row("no-ticket", {{u"action"_s, u"history"_s}}, "No ticket_id");
    row("unknown-ticket", historyOf(u"T-1002"_s), "No such ticket: T-1002");
    row("other-action", {{u"action"_s, u"sing"_s}, {u"ticket_id"_s, first}}, "Unknown action: sing");
    row("no-message", {{u"action"_s, u"reply"_s}, {u"ticket_id"_s, first}}, "No message");
    row("empty-message", replyTo(first, QString()), "No message");
}

void TestDevEndpoints::ticketRefusals()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    post(url(u"feedback.aspx"_s), ticketOf("dev"));
    const Outcome outcome = post(url(path), body);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.refusal(), error);
    QCOMPARE(messages(u"T-1001"_s).size(), 1);
}

KVTEDITOR_TEST_MAIN(TestDevEndpoints)
#include "tst_DevEndpoints.moc"
