#include "StoreFixture.h"
#include "support/FileSizeLimit.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QDir>
#include <QScopeGuard>
#include <QTest>

#include <limits>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString inTemp(const QString &name)
{
    return QDir::tempPath() + u'/' + name;
}

QString openedText(const QString &name, int bytes)
{
    return u"1 Opened "_s + name + u" \u2014 "_s + QString::number(bytes) + u" bytes."_s;
}

} // namespace

class TestAppStateStock : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void search_wire_data();
    void search_wire();
    void searchFields_wire();
    void search_isListed();
    void search_withoutArray();
    void search_failed_data();
    void search_failed();
    void search_laterAnswerWins();
    void search_answerAfterClear();
    void clear_data();
    void clear();

    void download_wire_data();
    void download_wire();
    void download_savesAndShows_data();
    void download_savesAndShows();
    void download_savesWhateverCame_data();
    void download_savesWhateverCame();
    void download_errorTextWins_data();
    void download_errorTextWins();
    void download_failedWithoutBytes_data();
    void download_failedWithoutBytes();
    void download_saveFails();
    void download_diskFull();
    void download_twiceOverwrites();
    void download_indexOutOfRange_data();
    void download_indexOutOfRange();
    void download_emptyList();
    void download_keepsItsRow();
    void download_afterTheListWasCleared();
    void download_worksAfterFailure();

    void open_showsTheFileOnTheMainTab_data();
    void open_showsTheFileOnTheMainTab();
    void open_tabIsMainAlready();
    void open_becomesTheWorkspace();
    void open_replacesTheEarlierFile();
    void open_nothingCame();
    void open_cannotWrite();
    void open_diskFull();
    void open_noTemporaryFolder_data();
    void open_noTemporaryFolder();
    void open_refusesWhatIsNotTheUsersOwn_data();
    void open_refusesWhatIsNotTheUsersOwn();
    void open_isForTheUserAlone();
    void open_errorTextOpensNothing();

    void names_stayInTheirFolder_data();
    void names_stayInTheirFolder();
    void names_tooLong_data();
    void names_tooLong();

    void requestsShowNothingAtTheirStart();
    void destroyedWithRequestsInFlight();

private:
    void list(const QByteArray &answer);
    void listFile(const QByteArray &name);
    void openTune(const QString &name);
    int download(const RawAnswer &answer, bool openKvt, int index = 0);

    QTemporaryDir m_deployment;
    std::unique_ptr<StoreFixture> m_fixture;
};

void TestAppStateStock::initTestCase()
{
    StoreFixture::deployWithAuthFields(m_deployment);
}

void TestAppStateStock::init()
{
    m_fixture = std::make_unique<StoreFixture>();
}

void TestAppStateStock::cleanup()
{
    m_fixture.reset();
}

void TestAppStateStock::list(const QByteArray &answer)
{
    m_fixture->takeAnnounced();
    m_fixture->server.answerNext(answerWith(answer));
    m_fixture->state->stockSearch({});
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->takeAnnounced().value(0), u"stock"_s);
}

void TestAppStateStock::listFile(const QByteArray &name)
{
    list("{\"files\":[{\"id\":\"1\",\"filename\":\"" + name + "\"}]}");
}

void TestAppStateStock::openTune(const QString &name)
{
    makeFile(m_fixture->inDir(name), "mine");
    m_fixture->state->openKvt(m_fixture->inDir(name));
    WAIT_VERIFY(m_fixture->idle());
    m_fixture->takeAnnounced();
}

/// How many requests the server saw for it.
int TestAppStateStock::download(const RawAnswer &answer, bool openKvt, int index)
{
    const int before = m_fixture->server.requestCount();
    m_fixture->server.answerNext(answer);
    m_fixture->state->stockDownload(index, openKvt);
    [this] { WAIT_VERIFY(m_fixture->idle()); }();
    return m_fixture->server.requestCount() - before;
}

void TestAppStateStock::search_wire_data()
{
    QTest::addColumn<QVariantMap>("filters");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("none") << QVariantMap() << QByteArray("{}");
    QTest::newRow("texts") << QVariantMap{{u"make"_s, u" GM\"\n"_s}, {u"Any Key"_s, u"\u00e9"_s}}
                           << QByteArray("{\"Any Key\":\"\xc3\xa9\",\"make\":\" GM\\\"\\n\"}");
    QTest::newRow("text-empty") << QVariantMap{{u"os"_s, QString()}} << QByteArray(R"({"os":""})");
    QTest::newRow("text-of-digits") << QVariantMap{{u"os"_s, u"12"_s}} << QByteArray(R"({"os":"12"})");
    QTest::newRow("number") << QVariantMap{{u"n"_s, 12}} << QByteArray(R"({"n":12})");
    QTest::newRow("number-past-2^31")
        << QVariantMap{{u"n"_s, Q_INT64_C(2147483648)}} << QByteArray(R"({"n":2147483648})");
    QTest::newRow("fraction") << QVariantMap{{u"n"_s, 1.5}} << QByteArray(R"({"n":1.5})");
    QTest::newRow("boolean") << QVariantMap{{u"b"_s, true}} << QByteArray(R"({"b":true})");
    QTest::newRow("nothing") << QVariantMap{{u"z"_s, QVariant()}} << QByteArray(R"({"z":null})");
    QTest::newRow("list") << QVariantMap{{u"l"_s, QVariantList{1, u"a"_s}}} << QByteArray(R"({"l":[1,"a"]})");
    QTest::newRow("texts-of-a-list") << QVariantMap{{u"l"_s, QStringList{u"a"_s, u"b"_s}}}
                                     << QByteArray(R"({"l":["a","b"]})");
    QTest::newRow("map") << QVariantMap{{u"m"_s, QVariantMap{{u"a"_s, false}}}}
                         << QByteArray(R"({"m":{"a":false}})");
}

void TestAppStateStock::search_wire()
{
    QFETCH(QVariantMap, filters);
    m_fixture->state->stockSearch(filters);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->server.requestCount(), 1);
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/stock/list.aspx HTTP/1.1"));
    QCOMPARE(request.header("content-type"), QByteArray("application/json; charset=utf-8"));
    QTEST(request.body, "body");
}

void TestAppStateStock::searchFields_wire()
{
    m_fixture->server.answerNext(answerWith(R"({"session_token":"tok"})"));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    m_fixture->state->stockSearchFields(u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s,
                                        u"9"_s);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->lastRequest().requestLine(), QByteArray("POST /api/stock/list.aspx HTTP/1.1"));
    QCOMPARE(m_fixture->lastRequest().body,
             QByteArray(R"({"file_type":"2","folder":"3","keyword":"7","make":"1","model":"5",)"
                        R"("module_type":"4","os":"6","sort":"8","sort_dir":"9"})"));
    m_fixture->state->stockSearchFields({}, {}, {}, {}, {}, {}, u" x "_s, {}, {});
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->lastRequest().body,
             QByteArray(R"({"file_type":"","folder":"","keyword":" x ","make":"","model":"",)"
                        R"("module_type":"","os":"","sort":"","sort_dir":""})"));
    QCOMPARE(m_fixture->server.requestCount(), 3);
}

void TestAppStateStock::search_isListed()
{
    qsizetype atSignal = -1;
    connect(m_fixture->state.get(), &AppState::stockChanged, this,
            [&] { atSignal = m_fixture->state->stockRows().size(); });
    m_fixture->server.answerNext(answerWith(
        R"({"files":"none","items":[{"path":"p/z.bin","name":"z.bin","module_type":"ECM","year":2015},1]})"));
    m_fixture->state->stockSearch({});
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"stock"_s, u"1 2 stock file(s)."_s}));
    QCOMPARE(atSignal, 2);
    const QVariantMap row = m_fixture->state->stockRows().first().toMap();
    QCOMPARE(row.keys(),
             QStringList({u"filename"_s, u"id"_s, u"make"_s, u"model"_s, u"module"_s, u"os"_s, u"year"_s}));
    QCOMPARE(row.value(u"id"_s).toString(), u"p/z.bin"_s);
    QCOMPARE(row.value(u"filename"_s).toString(), u"z.bin"_s);
    QCOMPARE(row.value(u"module"_s).toString(), u"ECM"_s);
    QCOMPARE(row.value(u"year"_s).toString(), u"2015"_s);
    QCOMPARE(m_fixture->state->stockRows().last().toMap().value(u"id"_s).toString(), QString());
}

void TestAppStateStock::search_withoutArray()
{
    list(R"({"files":[{"id":"old"}]})");
    m_fixture->server.answerNext(answerWith(R"({"error":"No."})"));
    m_fixture->state->stockSearch({});
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"stock"_s, u"1 0 stock file(s)."_s}));
    QCOMPARE(m_fixture->state->stockRows(), QVariantList());
}

void TestAppStateStock::search_failed_data()
{
    addFailedJsonAnswers();
}

void TestAppStateStock::search_failed()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QString, status);
    list(R"({"files":[{"id":"old"}]})");
    const QVariantList rows = m_fixture->state->stockRows();
    m_fixture->server.answerNext(answer);
    m_fixture->state->stockSearch({});
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, status), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->server.requestCount(), 2);
    QCOMPARE(m_fixture->state->stockRows(), rows);
    QCOMPARE(rows.size(), 1);
}

void TestAppStateStock::search_laterAnswerWins()
{
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->stockSearch({});
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 1);
    m_fixture->state->stockSearch({});
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerHeld(1, answerWith(R"({"files":[{"id":"asked-last"}]})"));
    WAIT_COMPARE(m_fixture->state->stockRows().size(), 1);
    m_fixture->server.answerHeld(0, answerWith(R"({"files":[{"id":"asked-first"}]})"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->state->stockRows().first().toMap().value(u"id"_s).toString(), u"asked-first"_s);
    QCOMPARE(m_fixture->announced,
             QStringList({u"stock"_s, u"1 1 stock file(s)."_s, u"stock"_s, u"1 1 stock file(s)."_s}));
}

void TestAppStateStock::search_answerAfterClear()
{
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->stockSearch({});
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 1);
    m_fixture->state->clearStock();
    m_fixture->server.answerHeld(0, answerWith(R"({"files":[{"id":"1"}]})"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"stock"_s, u"stock"_s, u"1 1 stock file(s)."_s}));
}

void TestAppStateStock::clear_data()
{
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("rows") << QByteArray(R"({"files":[{"id":"1"},{"id":"2"}]})");
    QTest::newRow("none") << QByteArray("{}");
}

void TestAppStateStock::clear()
{
    QFETCH(QByteArray, answer);
    list(answer);
    m_fixture->state->clearStock();
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"stock"_s});
    QCOMPARE(m_fixture->state->stockRows(), QVariantList());
}

void TestAppStateStock::download_wire_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("id");

    QTest::newRow("text") << 0 << QByteArray(" a/\"b\" ");
    QTest::newRow("number") << 1 << QByteArray("7");
    QTest::newRow("path-without-name") << 2 << QByteArray("gm/../\xc3\xa9.kvt");
    QTest::newRow("nothing") << 3 << QByteArray();
}

void TestAppStateStock::download_wire()
{
    QFETCH(int, index);
    QFETCH(QByteArray, id);
    m_fixture->server.answerNext(answerWith(R"({"session_token":"tok"})"));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    m_fixture->takeAnnounced();
    list("{\"files\":[{\"id\":\" a/\\\"b\\\" \"},{\"id\":7},{\"path\":\"gm/../\xc3\xa9.kvt\"},null]}");
    QCOMPARE(download(answerWith("bytes"), true, index), 1);
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/stock/download.aspx HTTP/1.1"));
    QVERIFY(request.header("content-type").startsWith("multipart/form-data; boundary="));
    QCOMPARE(formLines(request), QByteArrayList({"Content-Disposition: form-data; name=\"id\"", id}));
}

void TestAppStateStock::download_savesAndShows_data()
{
    QTest::addColumn<QByteArray>("filename");
    QTest::addColumn<bool>("openKvt");
    QTest::addColumn<QString>("name");

    QTest::newRow("kvt-not-asked-to-open") << QByteArray("TUNE.KVT") << false << u"TUNE.KVT"_s;
    QTest::newRow("bin-asked-to-open") << QByteArray("a.bin") << true << u"a.bin"_s;
    QTest::newRow("bin") << QByteArray("a.bin") << false << u"a.bin"_s;
    QTest::newRow("no-name") << QByteArray() << true << u"stock.bin"_s;
    QTest::newRow("no-name-not-asked-to-open") << QByteArray() << false << u"stock.bin"_s;
    QTest::newRow("kvt-in-the-middle") << QByteArray("a.kvt.zip") << true << u"a.kvt.zip"_s;
    QTest::newRow("kvt-without-its-dot") << QByteArray("akvt") << true << u"akvt"_s;
    QTest::newRow("kvt-and-a-blank") << QByteArray("a.kvt ") << true << u"a.kvt "_s;
    QTest::newRow("kvt-before-nul") << QByteArray(R"(a.kvt\u0000.bin)") << true << u"a.kvt_.bin"_s;
    QTest::newRow("newline") << QByteArray(R"(a\nb.bin)") << true << u"a\nb.bin"_s;
    QTest::newRow("markup") << QByteArray("<b>R&D %1 #%20.bin") << true << u"<b>R&D %1 #%20.bin"_s;
    QTest::newRow("not-ascii") << QByteArray("\xc3\xa9.bin") << true << u"\u00e9.bin"_s;
    QTest::newRow("hidden") << QByteArray(".bin") << true << u"_bin"_s;
}

void TestAppStateStock::download_savesAndShows()
{
    QFETCH(QByteArray, filename);
    QFETCH(bool, openKvt);
    QFETCH(QString, name);
    listFile(filename);
    m_fixture->state->setTab(u"stock"_s);
    m_fixture->takeAnnounced();
    const QByteArray bytes("\0\xff\r\n{", 5);
    QCOMPARE(download(answerWith(bytes), openKvt), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded "_s + name});
    QCOMPARE(m_fixture->documents(), QStringList{name});
    QCOMPARE(contentOf(m_fixture->inDocuments(name)), bytes);
    QCOMPARE(m_fixture->desktop.opened, m_fixture->documentsShown());
    QCOMPARE(m_fixture->state->tab(), u"stock"_s);
    QCOMPARE(m_fixture->state->fileName(), QString());
    QCOMPARE(m_fixture->state->stockRows().size(), 1);
}

void TestAppStateStock::download_savesWhateverCame_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("saved");

    const auto row = [](const char *name, int status, const QByteArray &body) {
        QTest::newRow(name) << httpAnswer(status, body) << body;
    };
    row("json-without-error", 200, R"({"status":"fail","message":"No."})");
    row("json-error-empty", 200, R"({"error":""})");
    row("json-error-null", 200, R"({"error":null})");
    row("json-error-wrong-type", 200, R"({"error":["No."]})");
    row("json-error-boolean", 200, R"({"error":true})");
    row("json-error-in-an-array", 200, R"([{"error":"No."}])");
    row("json-error-cut-short", 200, R"({"error":"No.")");
    row("html", 200, "<html></html>");
    row("nothing", 200, {});
    row("404-with-page", 404, "<html>gone</html>");
    row("500-with-json", 500, R"({"message":"No."})");
    QTest::newRow("cut-short") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\nhalf")
                               << QByteArray("half");
}

void TestAppStateStock::download_savesWhateverCame()
{
    QFETCH(QByteArray, answer);
    listFile("a.bin");
    QCOMPARE(download({answer}, true), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded a.bin"_s});
    QTEST(contentOf(m_fixture->inDocuments(u"a.bin"_s)), "saved");
}

void TestAppStateStock::download_errorTextWins_data()
{
    QTest::addColumn<QByteArray>("filename");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");

    const auto rows = [](const char *name, const QByteArray &answer, const QString &status) {
        QTest::addRow("bin-%s", name) << QByteArray("a.bin") << answer << status;
        QTest::addRow("kvt-%s", name) << QByteArray("a.kvt") << answer << status;
    };
    rows("200", httpAnswer(200, R"({"error":"Not in the library.","file_data":"UEFU"})"),
         u"0 Not in the library."_s);
    rows("200-number", httpAnswer(200, R"({"error":0})"), u"0 0"_s);
    rows("404", httpAnswer(404, R"({"error":"<b>Gone</b> %1"})"), u"0 <b>Gone</b> %1"_s);
    rows("500", httpAnswer(500, R"({"error":"No."})"), u"0 No."_s);
    rows("cut-short-after-the-object", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{\"error\":\"No.\"}",
         u"0 No."_s);
}

void TestAppStateStock::download_errorTextWins()
{
    QFETCH(QByteArray, filename);
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    listFile(filename);
    m_fixture->state->setTab(u"stock"_s);
    m_fixture->takeAnnounced();
    const QStringList before = m_fixture->filesEverywhere();
    QCOMPARE(download({answer}, true), 1);
    QCOMPARE(m_fixture->announced, QStringList{status});
    QCOMPARE(m_fixture->filesEverywhere(), before);
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(m_fixture->state->stockRows().size(), 1);
}

void TestAppStateStock::download_failedWithoutBytes_data()
{
    QTest::addColumn<RawAnswer>("answer");

    QTest::newRow("404") << RawAnswer{httpAnswer(404, {})};
    QTest::newRow("500") << RawAnswer{httpAnswer(500, {})};
    QTest::newRow("closed") << RawAnswer{};
    QTest::newRow("reset") << RawAnswer{{}, RawAnswer::Ending::Reset};
    QTest::newRow("cut-before-the-body") << RawAnswer{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n"};
}

void TestAppStateStock::download_failedWithoutBytes()
{
    QFETCH(RawAnswer, answer);
    openTune(u"mine.kvt"_s);
    m_fixture->state->setTab(u"stock"_s);
    listFile("a.kvt");
    const QStringList before = m_fixture->filesEverywhere();
    QCOMPARE(download(answer, true), 1);
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->filesEverywhere(), before);
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(m_fixture->state->tab(), u"stock"_s);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("mine"));
}

void TestAppStateStock::download_saveFails()
{
    makeFile(TestEnvironment::documents(), "a file in the folder's place");
    listFile("a.bin");
    QCOMPARE(download(answerWith("bytes"), true), 1);
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(contentOf(TestEnvironment::documents()), QByteArray("a file in the folder's place"));
}

void TestAppStateStock::download_diskFull()
{
    listFile("a.bin");
    {
        const FileSizeLimit limit(4);
        QCOMPARE(download(answerWith("more than fits"), true), 1);
    }
    QCOMPARE(m_fixture->announced, QStringList{u"0 Short write."_s});
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStateStock::download_twiceOverwrites()
{
    listFile("a.bin");
    QCOMPARE(download(answerWith("longer bytes"), true), 1);
    QCOMPARE(download(answerWith("short"), true), 1);
    QCOMPARE(m_fixture->documents(), QStringList{u"a.bin"_s});
    QCOMPARE(contentOf(m_fixture->inDocuments(u"a.bin"_s)), QByteArray("short"));
}

void TestAppStateStock::download_indexOutOfRange_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("-1") << -1;
    QTest::newRow("count") << 2;
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
    QTest::newRow("highest") << std::numeric_limits<int>::max();
}

void TestAppStateStock::download_indexOutOfRange()
{
    QFETCH(int, index);
    list(R"({"files":[{"id":"1"},{"id":"2"}]})");
    m_fixture->state->stockDownload(index, true);
    m_fixture->state->stockDownload(index, false);
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStateStock::download_emptyList()
{
    m_fixture->state->stockDownload(0, true);
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStateStock::download_keepsItsRow()
{
    listFile("asked.bin");
    m_fixture->server.answerNext(holdRequest());
    m_fixture->state->stockDownload(0, true);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerNext(answerWith(R"({"files":[{"id":"2","filename":"another.kvt"}]})"));
    m_fixture->state->stockSearch({});
    WAIT_COMPARE(m_fixture->announced, QStringList({u"stock"_s, u"1 1 stock file(s)."_s}));
    m_fixture->takeAnnounced();
    m_fixture->server.answerHeld(1, answerWith("bytes"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded asked.bin"_s});
    QCOMPARE(m_fixture->documents(), QStringList{u"asked.bin"_s});
}

void TestAppStateStock::download_afterTheListWasCleared()
{
    listFile("asked.bin");
    m_fixture->server.answerNext(holdRequest());
    m_fixture->state->stockDownload(0, true);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->state->clearStock();
    m_fixture->state->stockDownload(0, true);
    m_fixture->server.answerHeld(1, answerWith("bytes"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"stock"_s, u"1 Downloaded asked.bin"_s}));
    QCOMPARE(m_fixture->server.requestCount(), 2);
}

void TestAppStateStock::download_worksAfterFailure()
{
    listFile("a.bin");
    QCOMPARE(download({}, true), 1);
    QCOMPARE(m_fixture->state->statusOK(), 0);
    m_fixture->takeAnnounced();
    QCOMPARE(download(answerWith("bytes"), true), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded a.bin"_s});
}

void TestAppStateStock::open_showsTheFileOnTheMainTab_data()
{
    QTest::addColumn<QByteArray>("filename");
    QTest::addColumn<QString>("name");

    QTest::newRow("small-letters") << QByteArray("tune.kvt") << u"tune.kvt"_s;
    QTest::newRow("capitals") << QByteArray("TUNE.KVT") << u"TUNE.KVT"_s;
    QTest::newRow("mixed") << QByteArray("Tune.Rev2.Kvt") << u"Tune.Rev2.Kvt"_s;
    QTest::newRow("suffix-only") << QByteArray(".kvt") << u"_kvt"_s;
    QTest::newRow("signs") << QByteArray(" R&D <b> #%20?.kvt") << u" R&D <b> #%20?.kvt"_s;
    QTest::newRow("newline") << QByteArray(R"(a\nb.kvt)") << u"a\nb.kvt"_s;
    QTest::newRow("not-ascii") << QByteArray("\xc3\xa9.kvt") << u"\u00e9.kvt"_s;
}

void TestAppStateStock::open_showsTheFileOnTheMainTab()
{
    QFETCH(QByteArray, filename);
    QFETCH(QString, name);
    listFile(filename);
    m_fixture->state->setTab(u"stock"_s);
    m_fixture->takeAnnounced();
    const QByteArray bytes("KVT\0\xff", 5);
    // The download, and the question about the file that was opened.
    QCOMPARE(download(answerWith(bytes), true), 2);
    QCOMPARE(m_fixture->announced, QStringList({u"file"_s, u"identifiers"_s, openedText(name, 5), u"tab"_s}));
    QCOMPARE(m_fixture->state->tab(), u"main"_s);
    QCOMPARE(m_fixture->state->fileName(), name);
    QCOMPARE(m_fixture->state->currentKvtBytes(), bytes);
    QCOMPARE(contentOf(inTemp(name)), bytes);
    QCOMPARE(m_fixture->documents(), QStringList());
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStateStock::open_tabIsMainAlready()
{
    listFile("a.kvt");
    QCOMPARE(m_fixture->state->tab(), u"main"_s);
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(m_fixture->announced, QStringList({u"file"_s, u"identifiers"_s, openedText(u"a.kvt"_s, 5)}));
}

void TestAppStateStock::open_becomesTheWorkspace()
{
    listFile("a.kvt");
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(m_fixture->lastRequest().requestLine(),
             QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    QVERIFY(formLines(m_fixture->lastRequest()).contains("kvt_info"));
    QVERIFY(formLines(m_fixture->lastRequest()).contains("bytes"));
    QCOMPARE(m_fixture->state->dialogFolder(),
             QUrl::fromLocalFile(QFileInfo(QDir::tempPath()).absoluteFilePath()));
    QCOMPARE(m_fixture->state->suggestName(u"_x"_s), u"a_x"_s);
}

void TestAppStateStock::open_replacesTheEarlierFile()
{
    openTune(u"mine.kvt"_s);
    makeFile(inTemp(u"a.kvt"_s), "an earlier and longer download");
    listFile("a.kvt");
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(contentOf(inTemp(u"a.kvt"_s)), QByteArray("bytes"));
    QCOMPARE(m_fixture->state->fileName(), u"a.kvt"_s);
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("bytes"));
    QCOMPARE(contentOf(m_fixture->inDir(u"mine.kvt"_s)), QByteArray("mine"));
}

void TestAppStateStock::open_nothingCame()
{
    openTune(u"mine.kvt"_s);
    m_fixture->state->setTab(u"stock"_s);
    listFile("a.kvt");
    QCOMPARE(download(answerWith({}), true), 1);
    QCOMPARE(m_fixture->announced, QStringList({u"0 Could not read file."_s, u"tab"_s}));
    QCOMPARE(m_fixture->state->tab(), u"main"_s);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("mine"));
}

void TestAppStateStock::open_cannotWrite()
{
    openTune(u"mine.kvt"_s);
    QVERIFY(QDir().mkdir(inTemp(u"a.kvt"_s)));
    m_fixture->state->setTab(u"stock"_s);
    listFile("a.kvt");
    QCOMPARE(download(answerWith("bytes"), true), 1);
    QCOMPARE(m_fixture->announced.size(), 2);
    QVERIFY2(isOneFailure(m_fixture->announced.mid(0, 1), qtText),
             qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->announced.last(), u"tab"_s);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("mine"));
    QCOMPARE(m_fixture->documents(), QStringList());
}

void TestAppStateStock::open_diskFull()
{
    openTune(u"mine.kvt"_s);
    listFile("a.kvt");
    {
        const FileSizeLimit limit(4);
        QCOMPARE(download(answerWith("more than fits"), true), 1);
    }
    // Half a tune is not opened.
    QCOMPARE(m_fixture->announced, QStringList{u"0 Short write."_s});
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(m_fixture->state->tab(), u"main"_s);
}

void TestAppStateStock::open_noTemporaryFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("status");

    QTest::newRow("gone") << u"gone"_s << u"0 No such file or directory"_s;
    QTest::newRow("link-to-nothing") << u"link-to-nothing"_s << u"0 No such file or directory"_s;
    QTest::newRow("below-a-file") << u"file/below"_s << u"0 Not a directory"_s;
    QTest::newRow("link-to-itself") << u"link-to-itself"_s << u"0 Too many levels of symbolic links"_s;
}

// Qt reports a missing folder as an empty path, which must not mean the root. Qt 6.11 reports the path as it
// is, so a folder that is merely missing is created again.
void TestAppStateStock::open_noTemporaryFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, status);
    const QString name = u"kvteditor-without-temporary-folder.kvt"_s;
    openTune(u"mine.kvt"_s);
    m_fixture->state->setTab(u"stock"_s);
    listFile(name.toUtf8());
    makeFile(m_fixture->inDir(u"file"_s), {});
    QVERIFY(QFile::link(m_fixture->inDir(u"nothing"_s), m_fixture->inDir(u"link-to-nothing"_s)));
    QVERIFY(QFile::link(m_fixture->inDir(u"link-to-itself"_s), m_fixture->inDir(u"link-to-itself"_s)));
    const QStringList before = m_fixture->filesEverywhere();
    QTemporaryDir current;
    bool isMade = false;
    {
        const QByteArray temporaryFolder = qgetenv("TMPDIR");
        const QString workingFolder = QDir::currentPath();
        const auto restored = qScopeGuard([&] {
            qputenv("TMPDIR", temporaryFolder);
            QDir::setCurrent(workingFolder);
        });
        qputenv("TMPDIR", QFile::encodeName(m_fixture->inDir(folder)));
        QVERIFY(QDir::setCurrent(current.path()));
        isMade = folder == u"gone"_s && !QDir::tempPath().isEmpty();
        download(answerWith("bytes"), true);
    }
    // Removed in any case.
    const bool wasInTheRoot = QFile::remove(u'/' + name);
    QVERIFY(!wasInTheRoot);
    QVERIFY(QDir(current.path()).isEmpty());
    if (isMade) {
        QCOMPARE(m_fixture->state->fileName(), name);
        QCOMPARE(contentOf(m_fixture->inDir(folder + u'/' + name)), QByteArray("bytes"));
        return;
    }
    QCOMPARE(m_fixture->filesEverywhere(), before);
    QCOMPARE(m_fixture->announced, QStringList({status, u"tab"_s}));
    QCOMPARE(m_fixture->state->tab(), u"main"_s);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("mine"));
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());

    // Once it is there again.
    m_fixture->announced.clear();
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(m_fixture->announced.constLast(), openedText(name, 5));
    QCOMPARE(contentOf(inTemp(name)), QByteArray("bytes"));
}

void TestAppStateStock::open_refusesWhatIsNotTheUsersOwn_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("status");

    QTest::newRow("link") << u"link"_s << QByteArray("other") << u"0 Too many levels of symbolic links"_s;
    QTest::newRow("link-equal") << u"link"_s << QByteArray("bytes")
                                << u"0 Too many levels of symbolic links"_s;
    QTest::newRow("link-empty") << u"link"_s << QByteArray() << u"0 Too many levels of symbolic links"_s;
    QTest::newRow("second-name") << u"second-name"_s << QByteArray("other") << u"0 Too many links"_s;
    QTest::newRow("second-name-equal") << u"second-name"_s << QByteArray("bytes") << u"0 Too many links"_s;
    QTest::newRow("other-user") << u"other-user"_s << QByteArray("other") << u"0 Operation not permitted"_s;
    QTest::newRow("other-user-same-bytes")
        << u"other-user"_s << QByteArray("bytes") << u"0 Operation not permitted"_s;
}

// Equal bytes are not enough: whoever owns the file may change it before it is read again.
void TestAppStateStock::open_refusesWhatIsNotTheUsersOwn()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, content);
    QFETCH(QString, status);
    if (kind == u"other-user"_s && ::geteuid() != 0)
        QSKIP("Only root can give a file to another user.");
    openTune(u"mine.kvt"_s);
    listFile("a.kvt");
    const QString other = m_fixture->inDir(u"other"_s);
    makeFile(other, content);
    if (kind == u"link"_s)
        QVERIFY(QFile::link(other, inTemp(u"a.kvt"_s)));
    else
        QCOMPARE(
            ::link(QFile::encodeName(other).constData(), QFile::encodeName(inTemp(u"a.kvt"_s)).constData()),
            0);
    if (kind == u"other-user"_s) {
        constexpr uid_t nobody = 65534;
        QVERIFY(QFile::remove(other));
        QCOMPARE(::chown(QFile::encodeName(inTemp(u"a.kvt"_s)).constData(), nobody, nobody), 0);
    }
    QCOMPARE(download(answerWith("bytes"), true), 1);
    QCOMPARE(m_fixture->announced.constFirst(), status);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QCOMPARE(contentOf(inTemp(u"a.kvt"_s)), content);
}

void TestAppStateStock::open_isForTheUserAlone()
{
    constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    listFile("a.kvt");
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(QFileInfo(inTemp(u"a.kvt"_s)).permissions() & others, QFile::Permissions());
    // One that an earlier version left.
    QVERIFY(QFile::setPermissions(inTemp(u"a.kvt"_s), QFile::ReadOwner | QFile::WriteOwner | others));
    QCOMPARE(download(answerWith("bytes"), true), 2);
    QCOMPARE(QFileInfo(inTemp(u"a.kvt"_s)).permissions() & others, QFile::Permissions());
}

void TestAppStateStock::open_errorTextOpensNothing()
{
    openTune(u"mine.kvt"_s);
    m_fixture->state->setTab(u"stock"_s);
    listFile("a.kvt");
    QCOMPARE(download(answerWith(R"({"error":"No."})"), true), 1);
    QCOMPARE(m_fixture->announced, QStringList{u"0 No."_s});
    QCOMPARE(m_fixture->state->tab(), u"stock"_s);
    QCOMPARE(m_fixture->state->fileName(), u"mine.kvt"_s);
    QVERIFY(!QFileInfo::exists(inTemp(u"a.kvt"_s)));
}

void TestAppStateStock::names_stayInTheirFolder_data()
{
    QTest::addColumn<QByteArray>("filename");
    QTest::addColumn<QString>("saved");
    QTest::addColumn<QString>("opened");

    const QByteArray root = QFile::encodeName(QFileInfo(TestEnvironment::home()).absolutePath());
    const auto row = [](const char *name, const QByteArray &filename, const QString &bare) {
        const bool tune = bare.endsWith(u".kvt"_s);
        QTest::newRow(name) << filename << bare << (tune ? bare : QString());
    };
    row("up", "../../x.kvt", u"x.kvt"_s);
    row("up-bin", "../../x.bin", u"x.bin"_s);
    row("absolute", root + "/x.kvt", u"x.kvt"_s);
    row("absolute-bin", root + "/x.bin", u"x.bin"_s);
    row("absolute-elsewhere", "/etc/x.kvt", u"x.kvt"_s);
    row("empty", "", u"stock.bin"_s);
    row("folder", "a/b.kvt", u"b.kvt"_s);
    row("folder-bin", "a/b.bin", u"b.bin"_s);
    row("backslash-up", R"(..\\x.kvt)", u"x.kvt"_s);
    row("backslash-up-bin", R"(..\\x.bin)", u"x.bin"_s);
    row("drive", R"(C:\\x.bin)", u"x.bin"_s);
    row("two-dots", "..", u"stock.bin"_s);
    row("one-dot", ".", u"stock.bin"_s);
    row("two-dots-after-folder", "a/..", u"stock.bin"_s);
    row("trailing-slash", "a/b.kvt/", u"stock.bin"_s);
    row("trailing-backslash", R"(a\\b.kvt\\)", u"stock.bin"_s);
    row("slash", "/", u"stock.bin"_s);
    row("nul", R"(..\u0000/x.kvt)", u"x.kvt"_s);
    row("nul-ends-the-name", R"(../x.kvt\u0000)", u"x.kvt_"_s);
    row("nul-after-two-dots", R"(..\u0000)", u"_._"_s);
    row("start-up-file", ".bashrc", u"_bashrc"_s);
    row("start-up-file-elsewhere", "../../x/.profile", u"_profile"_s);
    row("hidden-tune", ".x.kvt", u"_x.kvt"_s);
    row("hidden-twice", "..x.bin", u"_.x.bin"_s);
    row("desktop-entry", "tune.desktop", u"tune.desktop.bin"_s);
    row("desktop-entry-in-capitals", "TUNE.DeskTop", u"TUNE.DeskTop.bin"_s);
    row("hidden-desktop-entry", ".desktop", u"_desktop"_s);
    row("desktop-in-the-midst", "desktop.bin", u"desktop.bin"_s);
    row("newline", R"(../a\nb.kvt)", u"a\nb.kvt"_s);
    row("newline-bin", R"(../a\nb.bin)", u"a\nb.bin"_s);
}

void TestAppStateStock::names_stayInTheirFolder()
{
    QFETCH(QByteArray, filename);
    QFETCH(QString, saved);
    QFETCH(QString, opened);
    listFile(filename);
    QStringList expected = m_fixture->filesEverywhere();

    QCOMPARE(download(answerWith("bytes"), false), 1);
    QCOMPARE(m_fixture->takeAnnounced(), QStringList{u"1 Downloaded "_s + saved});
    QCOMPARE(contentOf(m_fixture->inDocuments(saved)), QByteArray("bytes"));
    expected.append(u"home/Documents/"_s + saved);

    download(answerWith("again"), true);
    if (opened.isEmpty()) {
        QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded "_s + saved});
        QCOMPARE(contentOf(m_fixture->inDocuments(saved)), QByteArray("again"));
    } else {
        QCOMPARE(m_fixture->state->fileName(), opened);
        QCOMPARE(contentOf(inTemp(opened)), QByteArray("again"));
        QCOMPARE(contentOf(m_fixture->inDocuments(saved)), QByteArray("bytes"));
        expected.append(u"tmp/"_s + opened);
    }
    expected.sort();
    QCOMPARE(m_fixture->filesEverywhere(), expected);
}

void TestAppStateStock::names_tooLong_data()
{
    QTest::addColumn<QByteArray>("filename");
    QTest::addColumn<QStringList>("afterTheStatus");

    QTest::newRow("bin") << QByteArray(296, 'x') + ".bin" << QStringList();
    QTest::newRow("kvt") << QByteArray(296, 'x') + ".kvt" << QStringList{u"tab"_s};
}

void TestAppStateStock::names_tooLong()
{
    QFETCH(QByteArray, filename);
    QFETCH(QStringList, afterTheStatus);
    openTune(u"mine.kvt"_s);
    m_fixture->state->setTab(u"stock"_s);
    listFile(filename);
    const QStringList before = m_fixture->filesEverywhere();
    QCOMPARE(download(answerWith("bytes"), true), 1);
    QVERIFY2(isOneFailure(m_fixture->announced.mid(0, 1), qtText),
             qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->announced.mid(1), afterTheStatus);
    QCOMPARE(m_fixture->filesEverywhere(), before);
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(m_fixture->state->currentKvtBytes(), QByteArray("mine"));
}

void TestAppStateStock::requestsShowNothingAtTheirStart()
{
    listFile("a.kvt");
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->stockSearch({});
    m_fixture->state->stockDownload(0, true);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 3);
    QCOMPARE(m_fixture->announced, QStringList());
    QVERIFY(!m_fixture->state->busy());
    QCOMPARE(m_fixture->state->stockRows().size(), 1);
}

void TestAppStateStock::destroyedWithRequestsInFlight()
{
    listFile("a.kvt");
    m_fixture->server.answerAlways(holdRequest());
    for (int i = 0; i < 5; ++i) {
        m_fixture->state->stockSearch({});
        m_fixture->state->stockDownload(0, true);
    }
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 11);
    m_fixture->state.reset();
    for (int i = 1; i < 11; ++i)
        m_fixture->server.answerHeld(i, answerWith("bytes"));
    // One more request shows that the answers of the others are through.
    m_fixture->state = std::make_unique<AppState>();
    m_fixture->client()->setApiBase(m_fixture->server.baseUrl());
    m_fixture->server.answerNext(answerWith(R"({"files":[{}]})"));
    m_fixture->state->stockSearch({});
    WAIT_COMPARE(m_fixture->state->stockRows().size(), 1);
    QCOMPARE(m_fixture->announced, QStringList());
    QCOMPARE(m_fixture->documents(), QStringList());
    QVERIFY(!QFileInfo::exists(inTemp(u"a.kvt"_s)));
}

KVTEDITOR_TEST_MAIN(TestAppStateStock)
#include "tst_AppStateStock.moc"
