#include "StoreFixture.h"
#include "api/ServiceConfig.h"
#include "support/FileSizeLimit.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QScopeGuard>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

QStringList heard;

void hear(QtMsgType, const QMessageLogContext &, const QString &message)
{
    heard.append(message);
}

} // namespace

class TestAppStateXdf : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void signedOutAtFirst();
    void settersAnnounceChangesOnly();

    void login_wire_data();
    void login_wire();
    void login_signsIn();
    void login_refused_data();
    void login_refused();
    void login_failed_data();
    void login_failed();
    void login_sendsWhatTheFieldsHeldThen();
    void login_nextGoodOneWorks();
    void login_passwordStaysOutOfStatusAndLog_data();
    void login_passwordStaysOutOfStatusAndLog();

    void catalog_wire();
    void catalog_wireWhenSignedOut();
    void catalog_isListed();
    void catalog_withoutArray();
    void catalog_replacesTheEarlierOne();
    void catalog_failed_data();
    void catalog_failed();
    void catalog_laterAnswerWins();
    void catalog_afterLoginUsesTheNewToken();

    void download_wire_data();
    void download_wire();
    void download_savesAndShows();
    void download_savesWhateverCame_data();
    void download_savesWhateverCame();
    void download_names_data();
    void download_names();
    void download_nameTooLong();
    void download_failedWithoutBytes_data();
    void download_failedWithoutBytes();
    void download_twiceOverwrites();
    void download_saveFails();
    void download_diskFull();
    void download_indexOutOfRange_data();
    void download_indexOutOfRange();
    void download_emptyCatalog();
    void download_keepsItsItem();
    void download_keepsTheBalance();

    void requestsShowNothingAtTheirStart();
    void storeAddressOfAnotherKindCountsAsNone();
    void destroyedWithRequestsInFlight();

private:
    void signIn(const QByteArray &answer = R"({"session_token":"tok","credits":"15"})");
    void load(const QByteArray &catalog);

    QTemporaryDir m_deployment;
    std::unique_ptr<StoreFixture> m_fixture;
};

void TestAppStateXdf::initTestCase()
{
    StoreFixture::deployWithAuthFields(m_deployment);
}

void TestAppStateXdf::init()
{
    m_fixture = std::make_unique<StoreFixture>();
}

void TestAppStateXdf::cleanup()
{
    m_fixture.reset();
}

void TestAppStateXdf::signIn(const QByteArray &answer)
{
    m_fixture->takeAnnounced();
    m_fixture->server.answerNext(answerWith(answer));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->takeAnnounced(), QStringList({u"xdf"_s, u"1 XDF signed in."_s}));
}

void TestAppStateXdf::load(const QByteArray &catalog)
{
    m_fixture->server.answerNext(answerWith(catalog));
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->takeAnnounced().value(0), u"xdf"_s);
}

void TestAppStateXdf::signedOutAtFirst()
{
    const AppState &state = *m_fixture->state;
    QCOMPARE(state.xdfEmail(), QString());
    QCOMPARE(state.xdfPassword(), QString());
    QCOMPARE(state.xdfToken(), QString());
    QCOMPARE(state.xdfCredits(), QString());
    QCOMPARE(state.catalogText(), QString());
    QCOMPARE(state.xdfItems(), QVariantList());
}

void TestAppStateXdf::settersAnnounceChangesOnly()
{
    for (const char *property : {"xdfEmail", "xdfPassword"}) {
        QVERIFY(m_fixture->state->setProperty(property, u" typed "_s));
        QCOMPARE(m_fixture->takeAnnounced(), QStringList{u"xdf"_s});
        QCOMPARE(m_fixture->state->property(property).toString(), u" typed "_s);
        QVERIFY(m_fixture->state->setProperty(property, u" typed "_s));
        QCOMPARE(m_fixture->takeAnnounced(), QStringList());
        QVERIFY(m_fixture->state->setProperty(property, QString()));
        QCOMPARE(m_fixture->takeAnnounced(), QStringList{u"xdf"_s});
    }
}

void TestAppStateXdf::login_wire_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("both") << u"a@b.example"_s << u"secret"_s
                          << QByteArray(R"({"email":"a@b.example","password":"secret"})");
    QTest::newRow("empty") << QString() << QString() << QByteArray(R"({"email":"","password":""})");
    QTest::newRow("not-trimmed") << u" a "_s << u" s "_s << QByteArray(R"({"email":" a ","password":" s "})");
    QTest::newRow("quoted") << u"a\"\\"_s << u"s\n<&>"_s
                            << QByteArray(R"({"email":"a\"\\","password":"s\n<&>"})");
    QTest::newRow("not-ascii") << u"\u00e9"_s << u"\u20ac"_s
                               << QByteArray("{\"email\":\"\xc3\xa9\",\"password\":\"\xe2\x82\xac\"}");
}

void TestAppStateXdf::login_wire()
{
    QFETCH(QString, email);
    QFETCH(QString, password);
    m_fixture->state->setXdfEmail(email);
    m_fixture->state->setXdfPassword(password);
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->server.requestCount(), 1);
    const RecordedRequest request = m_fixture->server.request(0);
    QCOMPARE(request.requestLine(), QByteArray("POST /api/xdf/login.aspx HTTP/1.1"));
    QCOMPARE(request.header("content-type"), QByteArray("application/json; charset=utf-8"));
    QTEST(request.body, "body");
}

void TestAppStateXdf::login_signsIn()
{
    QStringList atSignal;
    const auto note = [&] {
        atSignal = QStringList{m_fixture->state->xdfToken(), m_fixture->state->xdfCredits()};
    };
    connect(m_fixture->state.get(), &AppState::xdfChanged, this, note);
    m_fixture->server.answerNext(answerWith(R"({"token":"abc","credits":15})"));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"1 XDF signed in."_s}));
    QCOMPARE(atSignal, QStringList({u"abc"_s, u"15"_s}));
    signIn(R"({"session_token":"tok"})");
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
    QCOMPARE(m_fixture->state->xdfCredits(), u"0"_s);
}

void TestAppStateXdf::login_refused_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");

    QTest::newRow("all-empty") << QByteArray(R"({"session_token":"","token":"","error":""})")
                               << u"XDF login failed."_s;
    QTest::newRow("error") << QByteArray(R"({"session_token":"","token":"","error":"Unknown account."})")
                           << u"Unknown account."_s;
    QTest::newRow("credits-are-not-taken") << QByteArray(R"({"credits":99})") << u"XDF login failed."_s;
}

void TestAppStateXdf::login_refused()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    signIn();
    m_fixture->server.answerNext(answerWith(answer));
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"0 "_s + status});
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
}

void TestAppStateXdf::login_failed_data()
{
    addFailedJsonAnswers();
}

void TestAppStateXdf::login_failed()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QString, status);
    signIn();
    m_fixture->server.answerNext(answer);
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, status), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->server.requestCount(), 2);
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
}

void TestAppStateXdf::login_sendsWhatTheFieldsHeldThen()
{
    m_fixture->state->setXdfEmail(u"first"_s);
    m_fixture->state->xdfLogin();
    m_fixture->state->setXdfEmail(u"second"_s);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->lastRequest().body, QByteArray(R"({"email":"first","password":""})"));
    QCOMPARE(m_fixture->state->xdfEmail(), u"second"_s);
}

void TestAppStateXdf::login_nextGoodOneWorks()
{
    m_fixture->server.answerNext({});
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->state->statusOK(), 0);
    m_fixture->takeAnnounced();
    signIn();
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
}

void TestAppStateXdf::login_passwordStaysOutOfStatusAndLog_data()
{
    addFailedJsonAnswers();
    QTest::newRow("signed-in") << answerWith(R"({"token":"TOKENSECRET"})") << QString();
    QTest::newRow("refused") << answerWith("{}") << QString();
}

void TestAppStateXdf::login_passwordStaysOutOfStatusAndLog()
{
    QFETCH(RawAnswer, answer);
    heard.clear();
    const QtMessageHandler before = qInstallMessageHandler(hear);
    const auto restore = qScopeGuard([before] { qInstallMessageHandler(before); });
    m_fixture->state->setXdfEmail(u"a@b.example"_s);
    m_fixture->state->setXdfPassword(u"TOPSECRET"_s);
    m_fixture->server.answerNext(answer);
    m_fixture->state->xdfLogin();
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY(m_fixture->server.request(0).body.contains("TOPSECRET"));
    for (const QString &said : heard + m_fixture->announced) {
        QVERIFY2(!said.contains(u"TOPSECRET"_s), qPrintable(said));
        QVERIFY2(!said.contains(u"TOKENSECRET"_s), qPrintable(said));
    }
}

void TestAppStateXdf::catalog_wire()
{
    signIn();
    m_fixture->state->applyKvtInfoJson(u"{\"modules\":[{\"mainOs\":\"12656942\"},{\"mainOs\":\"2\"}]}"_s);
    QCOMPARE(m_fixture->state->moduleOneOs(), u"12656942"_s);
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/xdf/catalog.aspx HTTP/1.1"));
    QCOMPARE(request.header("content-type"), QByteArray("application/json; charset=utf-8"));
    QCOMPARE(request.body, QByteArray(R"({"os_id":"12656942","session_token":"tok"})"));
}

void TestAppStateXdf::catalog_wireWhenSignedOut()
{
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->lastRequest().body, QByteArray(R"({"os_id":"","session_token":""})"));
}

void TestAppStateXdf::catalog_isListed()
{
    qsizetype atSignal = -1;
    QString textAtSignal;
    connect(m_fixture->state.get(), &AppState::xdfChanged, this, [&] {
        atSignal = m_fixture->state->xdfItems().size();
        textAtSignal = m_fixture->state->catalogText();
    });
    m_fixture->server.answerNext(
        answerWith(R"({"items":"none","catalog":[{"id":7,"name":"N","os":"12","credits":"3"},null]})"));
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"1 Catalog: 2 item(s)."_s}));
    const QVariantMap item{{u"id"_s, u"7"_s}, {u"title"_s, u"N"_s}, {u"os"_s, u"12"_s}, {u"credits"_s, 3}};
    const QVariantMap nothing{
        {u"id"_s, QString()}, {u"title"_s, QString()}, {u"os"_s, QString()}, {u"credits"_s, 0}};
    QCOMPARE(m_fixture->state->xdfItems(), QVariantList({item, nothing}));
    QVERIFY(m_fixture->state->catalogText().startsWith(u"{\n    \"catalog\": [\n"_s));
    QCOMPARE(atSignal, 2);
    QCOMPARE(textAtSignal, m_fixture->state->catalogText());
}

void TestAppStateXdf::catalog_withoutArray()
{
    m_fixture->server.answerNext(answerWith(R"({"error":"Sign in first."})"));
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"1 Catalog: 0 item(s)."_s}));
    QCOMPARE(m_fixture->state->catalogText(), u"{\n    \"error\": \"Sign in first.\"\n}\n"_s);
}

void TestAppStateXdf::catalog_replacesTheEarlierOne()
{
    signIn();
    load(R"({"items":[{"id":"a"},{"id":"b"}]})");
    load(R"({"items":[{"id":"c"}]})");
    QCOMPARE(m_fixture->state->xdfItems().size(), 1);
    QCOMPARE(m_fixture->state->xdfItems().first().toMap().value(u"id"_s).toString(), u"c"_s);
    load("{\"items\":[],\"more\":\"" + QByteArray(5000, 'x') + "\"}");
    QCOMPARE(m_fixture->state->xdfItems(), QVariantList());
    QCOMPARE(m_fixture->state->catalogText(),
             u"{\n    \"items\": [\n    ],\n    \"more\": \""_s + QString(3963, u'x'));
    QCOMPARE(m_fixture->state->xdfToken(), u"tok"_s);
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
}

void TestAppStateXdf::catalog_failed_data()
{
    addFailedJsonAnswers();
}

void TestAppStateXdf::catalog_failed()
{
    QFETCH(RawAnswer, answer);
    QFETCH(QString, status);
    load(R"({"items":[{"id":"old"}]})");
    const QVariantList items = m_fixture->state->xdfItems();
    const QString text = m_fixture->state->catalogText();
    m_fixture->server.answerNext(answer);
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, status), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->server.requestCount(), 2);
    QCOMPARE(m_fixture->state->xdfItems(), items);
    QCOMPARE(items.size(), 1);
    QCOMPARE(m_fixture->state->catalogText(), text);
}

void TestAppStateXdf::catalog_laterAnswerWins()
{
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->xdfCatalog();
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 1);
    m_fixture->state->xdfCatalog();
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerHeld(1, answerWith(R"({"items":[{"id":"asked-last"}]})"));
    WAIT_COMPARE(m_fixture->state->xdfItems().size(), 1);
    m_fixture->server.answerHeld(0, answerWith(R"({"items":[{"id":"asked-first"},{"id":"x"}]})"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->state->xdfItems().first().toMap().value(u"id"_s).toString(), u"asked-first"_s);
    QVERIFY(m_fixture->state->catalogText().contains(u"asked-first"_s));
    QCOMPARE(m_fixture->announced,
             QStringList({u"xdf"_s, u"1 Catalog: 1 item(s)."_s, u"xdf"_s, u"1 Catalog: 2 item(s)."_s}));
}

void TestAppStateXdf::catalog_afterLoginUsesTheNewToken()
{
    signIn();
    signIn(R"({"session_token":"newer"})");
    m_fixture->state->xdfCatalog();
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->lastRequest().body, QByteArray(R"({"os_id":"","session_token":"newer"})"));
}

void TestAppStateXdf::download_wire_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("id");

    QTest::newRow("text") << 0 << QByteArray(" a/\"b\" ");
    QTest::newRow("number") << 1 << QByteArray("7");
    QTest::newRow("none") << 2 << QByteArray();
    QTest::newRow("not-ascii") << 3 << QByteArray("\xc3\xa9");
}

void TestAppStateXdf::download_wire()
{
    QFETCH(int, index);
    QFETCH(QByteArray, id);
    signIn();
    load("{\"items\":[{\"id\":\" a/\\\"b\\\" \"},{\"id\":7},null,{\"id\":\"\xc3\xa9\"}]}");
    m_fixture->state->xdfDownload(index);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->server.requestCount(), 3);
    const RecordedRequest request = m_fixture->lastRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/xdf/download.aspx HTTP/1.1"));
    QVERIFY(request.header("content-type").startsWith("multipart/form-data; boundary="));
    QCOMPARE(formLines(request),
             QByteArrayList({"Content-Disposition: form-data; name=\"id\"", id,
                             "Content-Disposition: form-data; name=\"session_token\"", "tok"}));
}

void TestAppStateXdf::download_savesAndShows()
{
    load(R"({"items":[{"id":"1","title":"E38 12.6"}]})");
    const QByteArray bytes("<XDF>\0\xff\r\n", 9);
    m_fixture->server.answerNext(answerWith(bytes));
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded XDF."_s});
    QCOMPARE(m_fixture->documents(), QStringList{u"E38 12.6.xdf"_s});
    QCOMPARE(contentOf(m_fixture->inDocuments(u"E38 12.6.xdf"_s)), bytes);
    QCOMPARE(m_fixture->desktop.opened, m_fixture->documentsShown());
}

void TestAppStateXdf::download_savesWhateverCame_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("saved");

    const auto row = [](const char *name, int status, const QByteArray &body) {
        QTest::newRow(name) << httpAnswer(status, body) << body;
    };
    row("json-with-error", 200, R"({"error":"No."})");
    row("json-array", 200, "[1]");
    row("html", 200, "<html></html>");
    row("nothing", 200, {});
    row("204", 204, {});
    row("404-with-page", 404, "<html>gone</html>");
    row("402-with-json", 402, R"({"error":"No credits."})");
    row("500-with-file", 500, "<XDF/>");
    QTest::newRow("cut-short") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n<XDF>half")
                               << QByteArray("<XDF>half");
    QTest::newRow("no-length") << QByteArray("HTTP/1.1 200 OK\r\n\r\n<XDF/>") << QByteArray("<XDF/>");
}

void TestAppStateXdf::download_savesWhateverCame()
{
    QFETCH(QByteArray, answer);
    load(R"({"items":[{"id":"1","title":"T"}]})");
    m_fixture->server.answerNext({answer});
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded XDF."_s});
    QCOMPARE(m_fixture->documents(), QStringList{u"T.xdf"_s});
    QTEST(contentOf(m_fixture->inDocuments(u"T.xdf"_s)), "saved");
    QCOMPARE(m_fixture->server.requestCount(), 2);
}

void TestAppStateXdf::download_names_data()
{
    QTest::addColumn<QByteArray>("title");
    QTest::addColumn<QString>("name");

    QTest::newRow("plain") << QByteArray("T") << u"T.xdf"_s;
    QTest::newRow("empty") << QByteArray() << u"file.xdf"_s;
    QTest::newRow("blanks") << QByteArray("  ") << u"file.xdf"_s;
    QTest::newRow("blanks-around") << QByteArray(" x ") << u" x .xdf"_s;
    QTest::newRow("suffix-there-already") << QByteArray("T.xdf") << u"T.xdf.xdf"_s;
    QTest::newRow("signs") << QByteArray(R"(a/b\\c:d*e?f\"g<h>i|j)") << u"a_b_c_d_e_f_g_h_i_j.xdf"_s;
    QTest::newRow("up") << QByteArray("../../x") << u".._.._x.xdf"_s;
    QTest::newRow("backslash-up") << QByteArray(R"(..\\x)") << u".._x.xdf"_s;
    QTest::newRow("absolute") << QByteArray("/etc/x") << u"_etc_x.xdf"_s;
    QTest::newRow("folder") << QByteArray("a/b.kvt") << u"a_b.kvt.xdf"_s;
    QTest::newRow("one-dot") << QByteArray(".") << u"..xdf"_s;
    QTest::newRow("two-dots") << QByteArray("..") << u"...xdf"_s;
    QTest::newRow("nul") << QByteArray(R"(a\u0000b)") << u"a_b.xdf"_s;
    QTest::newRow("newline") << QByteArray(R"(a\nb)") << u"a\nb.xdf"_s;
    QTest::newRow("markup") << QByteArray("<b>R&D #%20</b>") << u"_b_R&D #%20__b_.xdf"_s;
    QTest::newRow("not-ascii") << QByteArray("\xc3\xa9") << u"\u00e9.xdf"_s;
    QTest::newRow("longest") << QByteArray(251, 'x') << QString(251, u'x') + u".xdf"_s;
}

void TestAppStateXdf::download_names()
{
    QFETCH(QByteArray, title);
    QFETCH(QString, name);
    load("{\"items\":[{\"id\":\"1\",\"title\":\"" + title + "\"}]}");
    const QStringList before = m_fixture->filesEverywhere();
    m_fixture->server.answerNext(answerWith("bytes"));
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded XDF."_s});
    QCOMPARE(m_fixture->documents(), QStringList{name});
    QCOMPARE(contentOf(m_fixture->inDocuments(name)), QByteArray("bytes"));
    QCOMPARE(m_fixture->filesEverywhere().size(), before.size() + 1);
}

void TestAppStateXdf::download_nameTooLong()
{
    load("{\"items\":[{\"id\":\"1\",\"title\":\"" + QByteArray(300, 'x') + "\"}]}");
    const QStringList before = m_fixture->filesEverywhere();
    m_fixture->server.answerNext(answerWith("bytes"));
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->filesEverywhere(), before);
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStateXdf::download_failedWithoutBytes_data()
{
    QTest::addColumn<RawAnswer>("answer");

    QTest::newRow("404") << RawAnswer{httpAnswer(404, {})};
    QTest::newRow("500") << RawAnswer{httpAnswer(500, {})};
    QTest::newRow("closed") << RawAnswer{};
    QTest::newRow("reset") << RawAnswer{{}, RawAnswer::Ending::Reset};
    QTest::newRow("cut-before-the-body") << RawAnswer{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n"};
    QTest::newRow("not-http") << RawAnswer{"220 mail.example ESMTP\r\n"};
}

void TestAppStateXdf::download_failedWithoutBytes()
{
    QFETCH(RawAnswer, answer);
    load(R"({"items":[{"id":"1","title":"T"}]})");
    m_fixture->server.answerNext(answer);
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->documents(), QStringList());
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(m_fixture->server.requestCount(), 2);
    QCOMPARE(m_fixture->state->xdfItems().size(), 1);
}

void TestAppStateXdf::download_twiceOverwrites()
{
    load(R"({"items":[{"id":"1","title":"T"}]})");
    for (const QByteArray &bytes : {QByteArray("longer bytes"), QByteArray("short")}) {
        m_fixture->server.answerNext(answerWith(bytes));
        m_fixture->state->xdfDownload(0);
        WAIT_VERIFY(m_fixture->idle());
        QCOMPARE(m_fixture->takeAnnounced(), QStringList{u"1 Downloaded XDF."_s});
        QCOMPARE(contentOf(m_fixture->inDocuments(u"T.xdf"_s)), bytes);
    }
    QCOMPARE(m_fixture->documents(), QStringList{u"T.xdf"_s});
}

void TestAppStateXdf::download_saveFails()
{
    makeFile(TestEnvironment::documents(), "a file in the folder's place");
    load(R"({"items":[{"id":"1","title":"T"}]})");
    m_fixture->server.answerNext(answerWith("bytes"));
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QVERIFY2(isOneFailure(m_fixture->announced, qtText), qPrintable(m_fixture->announced.join(u'|')));
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
    QCOMPARE(contentOf(TestEnvironment::documents()), QByteArray("a file in the folder's place"));
}

void TestAppStateXdf::download_diskFull()
{
    load(R"({"items":[{"id":"1","title":"T"}]})");
    m_fixture->server.answerNext(answerWith("more than fits"));
    {
        const FileSizeLimit limit(4);
        m_fixture->state->xdfDownload(0);
        WAIT_VERIFY(m_fixture->idle());
    }
    QCOMPARE(m_fixture->announced, QStringList{u"0 Short write."_s});
    QCOMPARE(m_fixture->desktop.opened, QList<QUrl>());
}

void TestAppStateXdf::download_indexOutOfRange_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("-1") << -1;
    QTest::newRow("count") << 2;
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
    QTest::newRow("highest") << std::numeric_limits<int>::max();
}

void TestAppStateXdf::download_indexOutOfRange()
{
    QFETCH(int, index);
    load(R"({"items":[{"id":"1"},{"id":"2"}]})");
    m_fixture->state->xdfDownload(index);
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStateXdf::download_emptyCatalog()
{
    m_fixture->state->xdfDownload(0);
    QVERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList());
}

void TestAppStateXdf::download_keepsItsItem()
{
    load(R"({"items":[{"id":"1","title":"asked for"}]})");
    m_fixture->server.answerNext(holdRequest());
    m_fixture->state->xdfDownload(0);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 2);
    m_fixture->server.answerNext(answerWith(R"({"items":[{"id":"2","title":"another"}]})"));
    m_fixture->state->xdfCatalog();
    WAIT_COMPARE(m_fixture->announced, QStringList({u"xdf"_s, u"1 Catalog: 1 item(s)."_s}));
    m_fixture->takeAnnounced();
    m_fixture->server.answerHeld(1, answerWith("bytes"));
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->announced, QStringList{u"1 Downloaded XDF."_s});
    QCOMPARE(m_fixture->documents(), QStringList{u"asked for.xdf"_s});
}

void TestAppStateXdf::download_keepsTheBalance()
{
    signIn();
    load(R"({"items":[{"id":"1","title":"T","credits":5}],"credits":3})");
    m_fixture->server.answerNext(answerWith(R"({"credits":10})"));
    m_fixture->state->xdfDownload(0);
    WAIT_VERIFY(m_fixture->idle());
    QCOMPARE(m_fixture->state->xdfCredits(), u"15"_s);
}

void TestAppStateXdf::requestsShowNothingAtTheirStart()
{
    load(R"({"items":[{"id":"1"}]})");
    m_fixture->server.answerAlways(holdRequest());
    m_fixture->state->xdfLogin();
    m_fixture->state->xdfCatalog();
    m_fixture->state->xdfDownload(0);
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 4);
    QCOMPARE(m_fixture->announced, QStringList());
    QVERIFY(!m_fixture->state->busy());
}

void TestAppStateXdf::storeAddressOfAnotherKindCountsAsNone()
{
    QCOMPARE(serviceConfig().storeUrl, u"file:///etc/passwd"_s);
    QCOMPARE(m_fixture->state->storeUrl(), QString());
}

void TestAppStateXdf::destroyedWithRequestsInFlight()
{
    load(R"({"items":[{"id":"1","title":"T"}]})");
    m_fixture->server.answerAlways(holdRequest());
    for (int i = 0; i < 4; ++i) {
        m_fixture->state->xdfLogin();
        m_fixture->state->xdfCatalog();
        m_fixture->state->xdfDownload(0);
    }
    WAIT_COMPARE(m_fixture->server.completeRequestCount(), 13);
    m_fixture->state.reset();
    for (int i = 1; i < 13; ++i)
        m_fixture->server.answerHeld(i, answerWith(R"({"token":"t","items":[]})"));
    // One more request shows that the answers of the others are through.
    m_fixture->state = std::make_unique<AppState>();
    m_fixture->client()->setApiBase(m_fixture->server.baseUrl());
    m_fixture->server.answerNext(answerWith(R"({"token":"t"})"));
    m_fixture->state->xdfLogin();
    WAIT_COMPARE(m_fixture->state->xdfToken(), u"t"_s);
    QCOMPARE(m_fixture->announced, QStringList());
    QCOMPARE(m_fixture->documents(), QStringList());
}

KVTEDITOR_TEST_MAIN(TestAppStateXdf)
#include "tst_AppStateXdf.moc"
