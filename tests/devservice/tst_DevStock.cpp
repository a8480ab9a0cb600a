#include "DevService.h"
#include "Exchange.h"
#include "SampleContainer.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

class TestDevStock : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void everythingIsListed();
    void rowHasWhatTheEditorReads();
    void filters_data();
    void filters();
    void sorting_data();
    void sorting();
    void equalRowsKeepTheirOrder();
    void containerDownloadIsReadable();
    void downloadHasTheSizeOfItsRow();
    void refusedSearches_data();
    void refusedSearches();
    void refusedDownloads_data();
    void refusedDownloads();

private:
    Outcome search(const QJsonObject &query);
    QJsonArray rows(const QJsonObject &query) { return search(query).json().value("files"_L1).toArray(); }
    Outcome download(const Fields &fields);

    std::unique_ptr<DevService> m_service;
};

void TestDevStock::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevStock::cleanup()
{
    m_service.reset();
}

Outcome TestDevStock::search(const QJsonObject &query)
{
    return post(m_service->apiBase() + "stock/list.aspx"_L1,
                QJsonDocument(query).toJson(QJsonDocument::Compact));
}

Outcome TestDevStock::download(const Fields &fields)
{
    return postParts(m_service->apiBase() + "stock/download.aspx"_L1, fields, {});
}

void TestDevStock::everythingIsListed()
{
    QJsonObject empty;
    for (const char *key :
         {"make", "file_type", "folder", "module_type", "model", "os", "keyword", "sort", "sort_dir"})
        empty.insert(QLatin1StringView(key), QString());
    const QJsonArray all = rows(empty);
    QCOMPARE(all.size(), 60);
    QCOMPARE(rows({}), all);
    QSet<QString> identifiers;
    QSet<QString> makes;
    QSet<QString> names;
    for (const QJsonValue &row : all) {
        identifiers.insert(row["id"_L1].toString());
        makes.insert(row["make"_L1].toString());
        names.insert(row["filename"_L1].toString());
    }
    QCOMPARE(identifiers.size(), 60);
    QCOMPARE(names.size(), 60);
    QCOMPARE(makes.size(), 10);
    QVERIFY(makes.contains(QString()));
}

void TestDevStock::rowHasWhatTheEditorReads()
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

void TestDevStock::filters_data()
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

void TestDevStock::filters()
{
    QFETCH(QJsonObject, query);
    QFETCH(QString, key);
    QFETCH(QString, part);
    QFETCH(int, count);
    const QJsonArray found = rows(query);
    for (const QJsonValue &row : found)
        QVERIFY(row[key].toString().contains(part, Qt::CaseInsensitive));
    QCOMPARE(found.size(), count);
}

void TestDevStock::sorting_data()
{
    QTest::addColumn<QString>("sort");
    QTest::addColumn<QString>("key");
    const std::pair<const char *, const char *> keys[] = {{"make", "make"},          {"os", "os"},
                                                          {"module_type", "module"}, {"filename", "filename"},
                                                          {"size", "size"},          {"year", "year"}};
    for (const auto &[sort, key] : keys)
        QTest::newRow(sort) << QString::fromLatin1(sort) << QString::fromLatin1(key);
}

void TestDevStock::sorting()
{
    QFETCH(QString, sort);
    QFETCH(QString, key);
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

void TestDevStock::equalRowsKeepTheirOrder()
{
    const auto byIdentifier = [](const QJsonValue &a, const QJsonValue &b) {
        return a["id"_L1].toString() < b["id"_L1].toString();
    };
    for (const QString &direction : {u"asc"_s, u"desc"_s}) {
        const QJsonArray found =
            rows({{u"make"_s, u"GMC"_s}, {u"sort"_s, u"make"_s}, {u"sort_dir"_s, direction}});
        QCOMPARE(found.size(), 6);
        QVERIFY(std::is_sorted(found.begin(), found.end(), byIdentifier));
    }
}

void TestDevStock::containerDownloadIsReadable()
{
    for (const QString &type : {u"kvt"_s, u"ctz"_s}) {
        const QJsonValue row = rows({{u"file_type"_s, type}}).last();
        QVERIFY(row["filename"_L1].toString().endsWith(u'.' + type));
        const Outcome outcome = download({{"id", row["id"_L1].toString().toLatin1()}});
        QCOMPARE(outcome.contentType, "application/octet-stream");
        const std::optional<SampleTune> tune = SampleContainer::read(outcome.body);
        QVERIFY(tune);
        QCOMPARE(tune->modules.first().mainOs, row["os"_L1].toString());
        QCOMPARE(tune->modules.first().title, row["module"_L1].toString());
    }
}

void TestDevStock::downloadHasTheSizeOfItsRow()
{
    for (const QJsonValue &row : rows({})) {
        const Outcome outcome = download({{"id", row["id"_L1].toString().toLatin1()}});
        QCOMPARE(outcome.status, 200);
        QCOMPARE(outcome.body.size(), row["size"_L1].toInt());
        QVERIFY(outcome.json().isEmpty());
    }
}

void TestDevStock::refusedSearches_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    QTest::newRow("no-json") << QByteArray("make=GMC") << u"Not a JSON object"_s;
    QTest::newRow("array") << QByteArray("[]") << u"Not a JSON object"_s;
    QTest::newRow("number") << QByteArray(R"({"make":1})") << u"Not a text: make"_s;
    QTest::newRow("null") << QByteArray(R"({"sort_dir":null})") << u"Not a text: sort_dir"_s;
    QTest::newRow("other-sort") << QByteArray(R"({"sort":"price"})") << u"Unknown order: price "_s;
    QTest::newRow("other-direction") << QByteArray(R"({"sort":"make","sort_dir":"up"})")
                                     << u"Unknown order: make up"_s;
}

void TestDevStock::refusedSearches()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    const Outcome outcome = post(m_service->apiBase() + "stock/list.aspx"_L1, body);
    QCOMPARE(outcome.status, 400);
    QCOMPARE(outcome.json().value("error"_L1).toString(), error);
}

void TestDevStock::refusedDownloads_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QString>("error");
    QTest::newRow("no-id") << Fields{{"name", "x"}} << u"No id"_s;
    QTest::newRow("empty-id") << Fields{{"id", ""}} << u"No such stock file: "_s;
    QTest::newRow("unknown-id") << Fields{{"id", "stock-999"}} << u"No such stock file: stock-999"_s;
}

void TestDevStock::refusedDownloads()
{
    QFETCH(Fields, fields);
    QFETCH(QString, error);
    const Outcome outcome = download(fields);
    QCOMPARE(outcome.json().value("error"_L1).toString(), error);
}

KVTEDITOR_TEST_MAIN(TestDevStock)
#include "tst_DevStock.moc"
