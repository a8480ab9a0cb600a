#include "api/VoxApiClient.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QJsonArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int calls = 0;
    QByteArray bytes;
    QJsonObject object;
    QString error;
    WorkerResult worker;

    JsonCallback json()
    {
        return [this](const QJsonObject &answer, const QString &text) {
            ++calls;
            object = answer;
            error = text;
        };
    }
    BytesCallback body()
    {
        return [this](const QByteArray &data, const QJsonObject &answer, const QString &text) {
            ++calls;
            bytes = data;
            object = answer;
            error = text;
        };
    }
    WorkerCallback work()
    {
        return [this](const WorkerResult &result) {
            ++calls;
            worker = result;
        };
    }
};

/// What Qt adds to every request.
const QByteArrayList libraryHeaders{"accept-encoding", "accept-language", "connection", "host", "user-agent"};

QByteArrayList sorted(QByteArrayList names)
{
    std::sort(names.begin(), names.end());
    return names;
}

QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value) {
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}

QList<std::pair<QByteArray, QByteArray>> partHeaders(const QByteArray &disposition)
{
    return {{"Content-Disposition", disposition}};
}

QList<std::pair<QByteArray, QByteArray>> filePartHeaders(const QByteArray &disposition)
{
    return {{"Content-Disposition", disposition}, {"Content-Type", "application/octet-stream"}};
}

} // namespace

class TestVoxApiClient : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void url_data();
    void url();
    void url_defaultIsTheServiceOverHttps();

    void postJson_wire();
    void postJson_body_data();
    void postJson_body();
    void getJson_wire();
    void postMultipart_wire();
    void postMultipart_values();
    void postMultipart_cleansFieldNames();
    void postMultipart_noPartsStillCallsBack();
    void postMultipart_names_data();
    void postMultipart_names();
    void postMultipart_fileBytes_data();
    void postMultipart_fileBytes();
    void downloadFile_wire();
    void kvtWorker_wire();
    void kvtWorker_laterFieldReplacesEarlier();
    void kvtWorker_refusesMissingInput_data();
    void kvtWorker_refusesMissingInput();
    void uploadToDev_wire();
    void uploadToDev_answers_data();
    void uploadToDev_answers();
    void feedbackSubmit_wire();
    void checkUpdate_wire();

    void ruleA_data();
    void ruleA();
    void ruleA_manyBytesOfUtf8();
    void ruleB_data();
    void ruleB();
    void ruleC_data();
    void ruleC();
    void ruleD_data();
    void ruleD();
    void kvtWorker_answers_data();
    void kvtWorker_answers();

    void downloadFile_followsRedirect();
    void downloadFile_followsRedirectToAnotherServer();
    void downloadFile_redirectLoopEnds();
    void startThatFails_data();
    void startThatFails();
    void callbacksRunOnTheMainThreadAndLater();
    void callbackOfSlowerRequestRunsLater();
    void callbackMayStartAnotherRequest();
    void callbackMayDeleteTheClient();
    void destroyedWithTenRequestsInFlight();
    void eachRequestHasItsOwnManagerThatGoes();

private:
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<VoxApiClient> m_client;
    std::unique_ptr<Outcome> m_outcome;
    RecordedRequest onlyRequest() const { return m_server->request(0); }
};

void TestVoxApiClient::init()
{
    m_server = std::make_unique<RawHttpServer>();
    m_outcome = std::make_unique<Outcome>();
    m_client = std::make_unique<VoxApiClient>();
    m_client->setApiBase(m_server->baseUrl());
}

void TestVoxApiClient::cleanup()
{
    m_client.reset();
    m_server.reset();
}

void TestVoxApiClient::url_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");

    const QString base = u"https://h.example/api/"_s;
    QTest::newRow("plain") << base << u"a/b.aspx"_s << u"https://h.example/api/a/b.aspx"_s;
    QTest::newRow("leading-slash") << base << u"/a/b.aspx"_s << u"https://h.example/api/a/b.aspx"_s;
    QTest::newRow("two-slashes-keep-one") << base << u"//a"_s << u"https://h.example/api//a"_s;
    QTest::newRow("empty") << base << QString() << base;
    QTest::newRow("only-slash") << base << u"/"_s << base;
    QTest::newRow("not-encoded") << base << u"a b?c=d&e#f%20"_s << u"https://h.example/api/a b?c=d&e#f%20"_s;
    QTest::newRow("base-without-slash")
        << u"https://h.example/api"_s << u"a"_s << u"https://h.example/api/a"_s;
    QTest::newRow("base-with-two-slashes")
        << u"https://h.example/api//"_s << u"a"_s << u"https://h.example/api//a"_s;
    QTest::newRow("base-empty") << QString() << u"a"_s << u"/a"_s;
    QTest::newRow("base-not-checked") << u" nonsense"_s << u"a"_s << u" nonsense/a"_s;
}

void TestVoxApiClient::url()
{
    QFETCH(QString, base);
    QFETCH(QString, path);
    m_client->setApiBase(base);
    QTEST(m_client->url(path), "expected");
}

void TestVoxApiClient::url_defaultIsTheServiceOverHttps()
{
    const VoxApiClient client;
    QVERIFY(client.url({}).startsWith(u"https://"_s));
    QVERIFY(client.url({}).endsWith(u"/api/"_s));
}

void TestVoxApiClient::postJson_wire()
{
    m_client->postJson(u"/some/path.aspx"_s, {{u"b"_s, u"caf\u00e9"_s}, {u"a"_s, 1}}, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("POST /api/some/path.aspx HTTP/1.1"));
    QCOMPARE(onlyRequest().headerNames(),
             sorted(libraryHeaders + QByteArrayList{"content-length", "content-type"}));
    QCOMPARE(onlyRequest().header("content-type"), QByteArray("application/json; charset=utf-8"));
    QCOMPARE(onlyRequest().body, QByteArray("{\"a\":1,\"b\":\"caf\xc3\xa9\"}"));
    QCOMPARE(onlyRequest().header("content-length"), QByteArray("19"));
}

void TestVoxApiClient::postJson_body_data()
{
    QTest::addColumn<QJsonObject>("object");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("empty") << QJsonObject() << QByteArray("{}");
    QTest::newRow("quotes-and-line-feed")
        << QJsonObject{{u"a"_s, u"\"x\"\n"_s}} << QByteArray(R"({"a":"\"x\"\n"})");
    QTest::newRow("nested") << QJsonObject{{u"a"_s, QJsonArray{1, QJsonObject{{u"b"_s, true}}}}}
                            << QByteArray(R"({"a":[1,{"b":true}]})");
    QTest::newRow("nul") << QJsonObject{{u"a"_s, QString(QChar(u'\0'))}} << QByteArray(R"({"a":"\u0000"})");
}

void TestVoxApiClient::postJson_body()
{
    QFETCH(QJsonObject, object);
    m_client->postJson(u"x"_s, object, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QTEST(onlyRequest().body, "body");
}

void TestVoxApiClient::getJson_wire()
{
    m_client->getJson(u"updates/x.json"_s, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("GET /api/updates/x.json HTTP/1.1"));
    QCOMPARE(onlyRequest().headerNames(), sorted(libraryHeaders + QByteArrayList{"cache-control", "pragma"}));
    QCOMPARE(onlyRequest().header("cache-control"), QByteArray("no-cache"));
    QCOMPARE(onlyRequest().body, QByteArray());
}

void TestVoxApiClient::postMultipart_wire()
{
    const QList<WorkerFile> files{{u"file"_s, u"truck.kvt"_s, everyByte()}, {u"extra"_s, u"a.bin"_s, "A"}};
    m_client->postMultipart(u"x.aspx"_s, {{u"b"_s, u"2"_s}, {u"a"_s, u"1"_s}}, files, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    const RecordedRequest request = onlyRequest();
    QCOMPARE(request.requestLine(), QByteArray("POST /api/x.aspx HTTP/1.1"));
    QCOMPARE(request.headerNames(),
             sorted(libraryHeaders + QByteArrayList{"content-length", "content-type"}));
    QVERIFY(request.header("content-type").startsWith("multipart/form-data; boundary="));
    QCOMPARE(request.header("content-length").toLongLong(), request.body.size());
    const QList<FormPart> parts = formParts(request);
    QCOMPARE(parts.size(), 4);
    QCOMPARE(parts[0].headers, partHeaders("form-data; name=\"a\""));
    QCOMPARE(parts[0].body, QByteArray("1"));
    QCOMPARE(parts[1].headers, partHeaders("form-data; name=\"b\""));
    QCOMPARE(parts[1].body, QByteArray("2"));
    QCOMPARE(parts[2].headers, filePartHeaders("form-data; name=\"file\"; filename=\"truck.kvt\""));
    QCOMPARE(parts[2].body, everyByte());
    QCOMPARE(parts[3].headers, filePartHeaders("form-data; name=\"extra\"; filename=\"a.bin\""));
    QCOMPARE(parts[3].body, QByteArray("A"));
}

void TestVoxApiClient::postMultipart_values()
{
    const QVariantMap fields{
        {u"Z"_s, u"capital first"_s}, {u"accent"_s, u"caf\u00e9"_s},   {u"bool"_s, true},
        {u"empty"_s, QString()},      {u"lines"_s, u"a\r\n--b\r\n"_s}, {u"number"_s, 12},
    };
    m_client->postMultipart(u"x"_s, fields, {}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    const QList<FormPart> parts = formParts(onlyRequest());
    QByteArrayList names;
    QByteArrayList bodies;
    for (const FormPart &part : parts) {
        names.append(part.header("Content-Disposition").mid(16));
        bodies.append(part.body);
    }
    QCOMPARE(names,
             QByteArrayList({"\"Z\"", "\"accent\"", "\"bool\"", "\"empty\"", "\"lines\"", "\"number\""}));
    QCOMPARE(bodies, QByteArrayList({"capital first", "caf\xc3\xa9", "true", "", "a\r\n--b\r\n", "12"}));
}

void TestVoxApiClient::postMultipart_cleansFieldNames()
{
    m_client->postMultipart(u"x"_s, {{u"a\r\nX-Injected: 1"_s, u"v"_s}}, {}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    const QList<FormPart> parts = formParts(onlyRequest());
    QCOMPARE(parts.size(), 1);
    QCOMPARE(parts[0].headers, partHeaders("form-data; name=\"a__X-Injected: 1\""));
    QCOMPARE(parts[0].body, QByteArray("v"));
}

void TestVoxApiClient::postMultipart_noPartsStillCallsBack()
{
    m_client->postMultipart(u"x"_s, {}, {}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
}

void TestVoxApiClient::postMultipart_names_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("disposition");

    QTest::newRow("plain") << u"file"_s << u"truck.kvt"_s
                           << QByteArray("form-data; name=\"file\"; filename=\"truck.kvt\"");
    QTest::newRow("quotes-as-they-are") << u"fi\"le"_s << u"a\"b\".kvt"_s
                                        << QByteArray("form-data; name=\"fi\"le\"; filename=\"a\"b\".kvt\"");
    QTest::newRow("backslash") << u"file"_s << u"a\\b.kvt"_s
                               << QByteArray("form-data; name=\"file\"; filename=\"a\\b.kvt\"");
    QTest::newRow("line-feed") << u"file"_s << u"a\nb.kvt"_s
                               << QByteArray("form-data; name=\"file\"; filename=\"a_b.kvt\"");
    QTest::newRow("carriage-return-line-feed")
        << u"file"_s << u"a\r\nX-Injected: 1.kvt"_s
        << QByteArray("form-data; name=\"file\"; filename=\"a__X-Injected: 1.kvt\"");
    QTest::newRow("nul") << u"file"_s << u"a"_s + QChar(u'\0') + u"b.kvt"_s
                         << QByteArray("form-data; name=\"file\"; filename=\"a_b.kvt\"");
    QTest::newRow("control-characters")
        << u"fi\tle\u007f"_s << u"a\u0001\u001b\u001f\u007f b\u0080.kvt"_s
        << QByteArray("form-data; name=\"fi_le_\"; filename=\"a____ b\xc2\x80.kvt\"");
    QTest::newRow("line-feed-in-field-name")
        << u"fi\nle"_s << u"a.kvt"_s << QByteArray("form-data; name=\"fi_le\"; filename=\"a.kvt\"");
    QTest::newRow("accent") << u"file"_s << u"caf\u00e9.kvt"_s
                            << QByteArray("form-data; name=\"file\"; filename=\"caf\xc3\xa9.kvt\"");
    QTest::newRow("percent-and-semicolon")
        << u"file"_s << u"a%20;b%1.kvt"_s
        << QByteArray("form-data; name=\"file\"; filename=\"a%20;b%1.kvt\"");
    QTest::newRow("placeholder-in-field-name")
        << u"f%2"_s << u"a.kvt"_s << QByteArray("form-data; name=\"f%2\"; filename=\"a.kvt\"");
    QTest::newRow("empty") << QString() << QString() << QByteArray("form-data; name=\"\"; filename=\"\"");
}

void TestVoxApiClient::postMultipart_names()
{
    QFETCH(QString, fieldName);
    QFETCH(QString, fileName);
    QFETCH(QByteArray, disposition);
    m_client->postMultipart(u"x"_s, {}, {{fieldName, fileName, "data"}}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    const QList<FormPart> parts = formParts(onlyRequest());
    QCOMPARE(parts.size(), 1);
    QCOMPARE(parts[0].headers, filePartHeaders(disposition));
    QCOMPARE(parts[0].body, QByteArray("data"));
}

void TestVoxApiClient::postMultipart_fileBytes_data()
{
    QTest::addColumn<QByteArray>("data");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("every-byte") << everyByte();
    QTest::newRow("line-ends-at-the-end") << QByteArray("a\r\n\r\n");
    QTest::newRow("looks-like-a-boundary") << QByteArray("--boundary_\r\n--\r\n\r\n--");
    QTest::newRow("one-chunk") << QByteArray(16 * 1024, 'x');
    QTest::newRow("one-chunk-and-one") << QByteArray(16 * 1024 + 1, 'x');
    QTest::newRow("eight-million") << QByteArray(8'000'000, '\xfe');
}

void TestVoxApiClient::postMultipart_fileBytes()
{
    QFETCH(QByteArray, data);
    const QList<WorkerFile> files{{u"file"_s, u"a"_s, data}, {u"last"_s, u"b"_s, "end"}};
    m_client->postMultipart(u"x"_s, {{u"k"_s, u"v"_s}}, files, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    const QList<FormPart> parts = formParts(onlyRequest());
    QCOMPARE(parts.size(), 3);
    QCOMPARE(parts[0].body, QByteArray("v"));
    QVERIFY(parts[1].body == data);
    QCOMPARE(parts[2].body, QByteArray("end"));
}

void TestVoxApiClient::downloadFile_wire()
{
    m_server->answerAlways(answerWith(everyByte()));
    const QString address = u"http://127.0.0.1:%1/files/a%20b.kvt?x=1&y=%25"_s.arg(m_server->port());
    m_client->downloadFile(address, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("GET /files/a%20b.kvt?x=1&y=%25 HTTP/1.1"));
    QCOMPARE(onlyRequest().headerNames(), sorted(libraryHeaders + QByteArrayList{"cache-control", "pragma"}));
    QCOMPARE(m_outcome->bytes, everyByte());
    QCOMPARE(m_outcome->error, QString());
}

void TestVoxApiClient::kvtWorker_wire()
{
    const QList<WorkerFile> files{{u"file"_s, u"truck.kvt"_s, "input"}, {u"header"_s, u"header.bin"_s, "h"}};
    m_client->kvtWorker(u"4.0.2"_s, u"convert_x"_s, {{u"xcal_mode"_s, u"flat"_s}, {u"a"_s, u"1"_s}}, files,
                        m_outcome->work());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    const QList<FormPart> parts = formParts(onlyRequest());
    QCOMPARE(parts.size(), 6);
    QCOMPARE(parts[0].headers, partHeaders("form-data; name=\"a\""));
    QCOMPARE(parts[0].body, QByteArray("1"));
    QCOMPARE(parts[1].headers, partHeaders("form-data; name=\"operation\""));
    QCOMPARE(parts[1].body, QByteArray("convert_x"));
    QCOMPARE(parts[2].headers, partHeaders("form-data; name=\"version\""));
    QCOMPARE(parts[2].body, QByteArray("4.0.2"));
    QCOMPARE(parts[3].headers, partHeaders("form-data; name=\"xcal_mode\""));
    QCOMPARE(parts[3].body, QByteArray("flat"));
    QCOMPARE(parts[4].headers, filePartHeaders("form-data; name=\"file\"; filename=\"truck.kvt\""));
    QCOMPARE(parts[4].body, QByteArray("input"));
    QCOMPARE(parts[5].headers, filePartHeaders("form-data; name=\"header\"; filename=\"header.bin\""));
    QCOMPARE(parts[5].body, QByteArray("h"));
}

void TestVoxApiClient::kvtWorker_laterFieldReplacesEarlier()
{
    const FieldList fields{{u"a"_s, u"first"_s}, {u"b"_s, u"x"_s}, {u"a"_s, u"second"_s}};
    m_client->kvtWorker(u"4.0.2"_s, u"op"_s, fields, {{u"file"_s, u"f"_s, "input"}}, m_outcome->work());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(formParts(onlyRequest()).size(), 5);
    QCOMPARE(formField(onlyRequest(), "a"), QByteArray("second"));
}

void TestVoxApiClient::kvtWorker_refusesMissingInput_data()
{
    QTest::addColumn<int>("files");

    QTest::newRow("no-file") << 0;
    QTest::newRow("empty-input") << 1;
    QTest::newRow("empty-input-but-extra-file") << 2;
}

void TestVoxApiClient::kvtWorker_refusesMissingInput()
{
    QFETCH(int, files);
    const QList<WorkerFile> all{{u"file"_s, u"f"_s, {}}, {u"extra"_s, u"e"_s, "bytes"}};
    m_client->kvtWorker(u"4.0.2"_s, u"op"_s, {}, all.first(files), m_outcome->work());
    WAIT_COMPARE(m_outcome->calls, 1);
    QVERIFY(!m_outcome->worker.ok);
    QVERIFY(!m_outcome->worker.isJson);
    QCOMPARE(m_outcome->worker.error, u"No input file for worker request."_s);
    // Another request arrives, so an unwanted earlier one would have arrived too.
    m_client->getJson(u"after"_s, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 2);
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(m_server->connectionCount(), 1);
}

void TestVoxApiClient::uploadToDev_wire()
{
    m_client->uploadToDev({{u"b"_s, 1}, {u"a"_s, u"\u00e9"_s}}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("POST /api/upload.aspx HTTP/1.1"));
    QCOMPARE(onlyRequest().header("content-type"), QByteArray("application/json; charset=utf-8"));
    QCOMPARE(onlyRequest().headerNames(),
             sorted(libraryHeaders + QByteArrayList{"content-length", "content-type"}));
    QCOMPARE(onlyRequest().body, QByteArray("{\"a\":\"\xc3\xa9\",\"b\":1}"));
}

void TestVoxApiClient::uploadToDev_answers_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("failed");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QJsonObject>("object");

    const QJsonObject one{{u"a"_s, 1}};
    QTest::newRow("object") << 200 << QByteArray(R"({"a":1})") << false << QString() << one;
    QTest::newRow("text") << 200 << QByteArray("OK") << true << u"HTTP 200: OK"_s << QJsonObject();
    QTest::newRow("500-object") << 500 << QByteArray(R"({"a":1})") << true << QString() << one;
}

void TestVoxApiClient::uploadToDev_answers()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, failed);
    QFETCH(QString, error);
    QFETCH(QJsonObject, object);
    m_server->answerAlways({httpAnswer(status, body)});
    m_outcome->bytes = "of before";
    m_client->uploadToDev({}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->bytes, QByteArray());
    QCOMPARE(m_outcome->object, object);
    QCOMPARE(!m_outcome->error.isEmpty(), failed);
    QVERIFY(error.isEmpty() || m_outcome->error == error);
}

void TestVoxApiClient::feedbackSubmit_wire()
{
    m_client->feedbackSubmit({{u"type"_s, u"dev"_s}}, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("POST /api/feedback.aspx HTTP/1.1"));
    QCOMPARE(onlyRequest().body, QByteArray("{\"type\":\"dev\"}"));
}

void TestVoxApiClient::checkUpdate_wire()
{
    m_client->checkUpdate(m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(onlyRequest().requestLine(), QByteArray("GET /api/updates/kvteditornew/update.json HTTP/1.1"));
    QCOMPARE(onlyRequest().body, QByteArray());
}

// Answers by rule. "!" stands for one of Qt's error texts.

void TestVoxApiClient::ruleA_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QJsonObject>("object");

    const QString library = u"!"_s;
    const QJsonObject none;
    const QJsonObject one{{u"a"_s, 1}};
    QTest::newRow("200-object") << 200 << QByteArray(R"({"a":1})") << QString() << one;
    QTest::newRow("201-object") << 201 << QByteArray(R"({"a":1})") << QString() << one;
    QTest::newRow("200-empty-object") << 200 << QByteArray("{}") << QString() << none;
    QTest::newRow("200-two-letters") << 200 << QByteArray("OK") << u"HTTP 200: OK"_s << none;
    QTest::newRow("200-empty") << 200 << QByteArray() << u"HTTP 200: "_s << none;
    QTest::newRow("202-text") << 202 << QByteArray("later") << u"HTTP 202: later"_s << none;
    QTest::newRow("200-array") << 200 << QByteArray("[{\"a\":1}]") << u"HTTP 200: [{\"a\":1}]"_s << none;
    QTest::newRow("200-trailing-text") << 200 << QByteArray("{} x") << u"HTTP 200: {} x"_s << none;
    QTest::newRow("200-299-bytes") << 200 << QByteArray(299, 'x') << u"HTTP 200: "_s + QString(299, u'x')
                                   << none;
    QTest::newRow("200-300-bytes") << 200 << QByteArray(300, 'x') << u"HTTP 200: "_s + QString(300, u'x')
                                   << none;
    QTest::newRow("200-301-bytes") << 200 << QByteArray(301, 'x') << u"HTTP 200: "_s + QString(300, u'x')
                                   << none;
    QTest::newRow("200-1000-bytes") << 200 << QByteArray(1000, 'x') << u"HTTP 200: "_s + QString(300, u'x')
                                    << none;
    QTest::newRow("200-placeholder") << 200 << QByteArray("%1 %2") << u"HTTP 200: %1 %2"_s << none;
    QTest::newRow("400-object") << 400 << QByteArray(R"({"a":1})") << library << one;
    QTest::newRow("500-object") << 500 << QByteArray(R"({"a":1})") << library << one;
    QTest::newRow("404-html") << 404 << QByteArray("<html>") << library << none;
    QTest::newRow("500-empty") << 500 << QByteArray() << library << none;
}

void TestVoxApiClient::ruleA()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    QFETCH(QJsonObject, object);
    m_server->answerAlways({httpAnswer(status, body)});
    m_client->postJson(u"x"_s, {}, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->object, object);
    if (error == u"!"_s) {
        QVERIFY(!m_outcome->error.isEmpty());
        QVERIFY(!m_outcome->error.startsWith(u"HTTP "_s));
    } else {
        QCOMPARE(m_outcome->error, error);
    }
}

void TestVoxApiClient::ruleA_manyBytesOfUtf8()
{
    // Two bytes a letter: 300 bytes are 150 of them.
    m_server->answerAlways(answerWith(QByteArray("\xc3\xa9").repeated(200)));
    m_client->postJson(u"x"_s, {}, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->error, u"HTTP 200: "_s + QString(150, u'\u00e9'));
}

void TestVoxApiClient::ruleB_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("fails");
    QTest::addColumn<QJsonObject>("object");

    const QJsonObject none;
    const QJsonObject one{{u"a"_s, 1}};
    QTest::newRow("200-object") << 200 << QByteArray(R"({"a":1})") << false << one;
    QTest::newRow("200-html") << 200 << QByteArray("<html></html>") << false << none;
    QTest::newRow("200-empty") << 200 << QByteArray() << false << none;
    QTest::newRow("200-array") << 200 << QByteArray("[1]") << false << none;
    QTest::newRow("404-object") << 404 << QByteArray(R"({"a":1})") << true << one;
    QTest::newRow("503-html") << 503 << QByteArray("<html></html>") << true << none;
    QTest::newRow("500-empty") << 500 << QByteArray() << true << none;
}

void TestVoxApiClient::ruleB()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server->answerAlways({httpAnswer(status, body)});
    m_client->getJson(u"x"_s, m_outcome->json());
    WAIT_COMPARE(m_outcome->calls, 1);
    QTEST(m_outcome->object, "object");
    QTEST(!m_outcome->error.isEmpty(), "fails");
}

void TestVoxApiClient::ruleC_data()
{
    ruleB_data();
    const QJsonObject none;
    QTest::newRow("200-bytes") << 200 << everyByte() << false << none;
    QTest::newRow("500-bytes") << 500 << everyByte() << true << none;
}

void TestVoxApiClient::ruleC()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server->answerAlways({httpAnswer(status, body)});
    m_client->postMultipart(u"x"_s, {{u"a"_s, 1}}, {}, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->bytes, body);
    QTEST(m_outcome->object, "object");
    QTEST(!m_outcome->error.isEmpty(), "fails");
}

void TestVoxApiClient::ruleD_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("fails");

    QTest::newRow("200-bytes") << 200 << everyByte() << false;
    QTest::newRow("200-object-not-parsed") << 200 << QByteArray(R"({"a":1})") << false;
    QTest::newRow("200-empty") << 200 << QByteArray() << false;
    QTest::newRow("404-object-not-parsed") << 404 << QByteArray(R"({"a":1})") << true;
    QTest::newRow("500-empty") << 500 << QByteArray() << true;
}

void TestVoxApiClient::ruleD()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server->answerAlways({httpAnswer(status, body)});
    m_client->downloadFile(m_server->baseUrl() + u"file"_s, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->bytes, body);
    QCOMPARE(m_outcome->object, QJsonObject());
    QTEST(!m_outcome->error.isEmpty(), "fails");
}

void TestVoxApiClient::kvtWorker_answers_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("isJson");
    QTest::addColumn<QString>("error");

    QTest::newRow("200-file") << 200 << everyByte() << true << false << QString();
    QTest::newRow("200-json-ok") << 200 << QByteArray(R"({"status":"ok"})") << true << true << QString();
    QTest::newRow("200-json-refused")
        << 200 << QByteArray(R"({"status":"no","message":"m"})") << false << true << u"m"_s;
    QTest::newRow("200-empty") << 200 << QByteArray() << false << false
                               << u"Worker returned empty response."_s;
    QTest::newRow("402-json") << 402 << QByteArray(R"({"status":"no","error":"No credits."})") << false
                              << true << u"No credits."_s;
    QTest::newRow("500-html-is-a-file") << 500 << QByteArray("<html>") << true << false << QString();
}

void TestVoxApiClient::kvtWorker_answers()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, isJson);
    m_server->answerAlways({httpAnswer(status, body)});
    m_client->kvtWorker(u"4.0.2"_s, u"op"_s, {}, {{u"file"_s, u"f"_s, "input"}}, m_outcome->work());
    WAIT_COMPARE(m_outcome->calls, 1);
    QTEST(m_outcome->worker.ok, "ok");
    QCOMPARE(m_outcome->worker.isJson, isJson);
    QTEST(m_outcome->worker.error, "error");
    QCOMPARE(m_outcome->worker.data, isJson ? QByteArray() : body);
    QCOMPARE(m_outcome->worker.text, isJson ? QString::fromUtf8(body) : QString());
}

void TestVoxApiClient::downloadFile_followsRedirect()
{
    m_server->answerNext({httpAnswer(302, "moved", "Location: /elsewhere/file.kvt\r\n")});
    m_server->answerNext(answerWith("the file"));
    m_client->downloadFile(m_server->baseUrl() + u"file.kvt"_s, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->bytes, QByteArray("the file"));
    QCOMPARE(m_outcome->error, QString());
    QCOMPARE(m_server->requestCount(), 2);
    QCOMPARE(m_server->request(1).requestLine(), QByteArray("GET /elsewhere/file.kvt HTTP/1.1"));
}

void TestVoxApiClient::downloadFile_followsRedirectToAnotherServer()
{
    RawHttpServer store;
    store.answerAlways(answerWith("the file"));
    const QByteArray location = "Location: " + store.baseUrl().toUtf8() + "file.kvt\r\n";
    m_server->answerAlways({httpAnswer(302, "moved", location)});
    m_client->downloadFile(m_server->baseUrl() + u"file.kvt"_s, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_outcome->error, QString());
    QCOMPARE(m_outcome->bytes, QByteArray("the file"));
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(store.request(0).requestLine(), QByteArray("GET /api/file.kvt HTTP/1.1"));
}

void TestVoxApiClient::downloadFile_redirectLoopEnds()
{
    m_server->answerAlways({httpAnswer(302, {}, "Location: /again\r\n")});
    m_client->downloadFile(m_server->baseUrl() + u"file"_s, m_outcome->body());
    WAIT_COMPARE(m_outcome->calls, 1);
    QVERIFY(!m_outcome->error.isEmpty());
    WAIT_COMPARE(m_client->findChildren<QNetworkAccessManager *>().size(), 0);
    QCOMPARE(m_outcome->calls, 1);
}

void TestVoxApiClient::startThatFails_data()
{
    QTest::addColumn<QString>("base");

    QTest::newRow("no-scheme") << u"nonsense"_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("unknown-scheme") << u"gopher://127.0.0.1/api/"_s;
    QTest::newRow("no-host") << u"http:///api/"_s;
    QTest::newRow("bad-port") << u"http://127.0.0.1:99999/api/"_s;
    QTest::newRow("bad-host") << u"http://[::1/api/"_s;
}

void TestVoxApiClient::startThatFails()
{
    QFETCH(QString, base);
    m_client->setApiBase(base);
    Outcome outcomes[5];
    m_client->postJson(u"x"_s, {}, outcomes[0].json());
    m_client->getJson(u"x"_s, outcomes[1].json());
    m_client->postMultipart(u"x"_s, {{u"a"_s, 1}}, {}, outcomes[2].body());
    m_client->downloadFile(m_client->url(u"x"_s), outcomes[3].body());
    m_client->kvtWorker(u"4.0.2"_s, u"op"_s, {}, {{u"file"_s, u"f"_s, "input"}}, outcomes[4].work());
    for (const Outcome &outcome : outcomes) {
        WAIT_COMPARE(outcome.calls, 1);
        QCOMPARE(outcome.object, QJsonObject());
        QCOMPARE(outcome.bytes, QByteArray());
    }
    QVERIFY(!outcomes[4].worker.ok);
    outcomes[4].error = outcomes[4].worker.error;
    for (const Outcome &outcome : outcomes) {
        QVERIFY(!outcome.error.isEmpty());
    }
    WAIT_COMPARE(m_client->findChildren<QNetworkAccessManager *>().size(), 0);
    for (const Outcome &outcome : outcomes) {
        QCOMPARE(outcome.calls, 1);
    }
    m_client.reset();
}

void TestVoxApiClient::callbacksRunOnTheMainThreadAndLater()
{
    QThread *thread = nullptr;
    m_client->getJson(u"x"_s,
                      [&thread](const QJsonObject &, const QString &) { thread = QThread::currentThread(); });
    QCOMPARE(thread, nullptr);
    WAIT_COMPARE(thread, QThread::currentThread());
}

void TestVoxApiClient::callbackOfSlowerRequestRunsLater()
{
    m_server->answerNext(holdRequest());
    m_server->answerAlways(answerWith(R"({"n":2})"));
    Outcome slow;
    Outcome fast;
    m_client->getJson(u"slow"_s, slow.json());
    WAIT_COMPARE(m_server->requestCount(), 1);
    m_client->getJson(u"fast"_s, fast.json());
    WAIT_COMPARE(fast.calls, 1);
    QCOMPARE(slow.calls, 0);
    m_server->answerHeld(0, answerWith(R"({"n":1})"));
    WAIT_COMPARE(slow.calls, 1);
    QCOMPARE(slow.object, QJsonObject({{u"n"_s, 1}}));
    QCOMPARE(fast.object, QJsonObject({{u"n"_s, 2}}));
    m_client.reset();
}

void TestVoxApiClient::callbackMayStartAnotherRequest()
{
    m_client->getJson(u"first"_s, [this](const QJsonObject &, const QString &) {
        m_client->getJson(u"second"_s, m_outcome->json());
    });
    WAIT_COMPARE(m_outcome->calls, 1);
    QCOMPARE(m_server->requestCount(), 2);
}

void TestVoxApiClient::callbackMayDeleteTheClient()
{
    bool called = false;
    m_client->getJson(u"x"_s, [this, &called](const QJsonObject &, const QString &) {
        called = true;
        m_client.release()->deleteLater();
    });
    WAIT_VERIFY(called);
}

void TestVoxApiClient::destroyedWithTenRequestsInFlight()
{
    m_server->answerAlways(holdRequest());
    const QList<WorkerFile> files{{u"file"_s, u"f"_s, QByteArray(1'000'000, 'x')}};
    for (int i = 0; i < 2; ++i) {
        m_client->postJson(u"x"_s, {{u"a"_s, QString(100'000, u'x')}}, m_outcome->json());
        m_client->getJson(u"x"_s, m_outcome->json());
        m_client->postMultipart(u"x"_s, {{u"a"_s, 1}}, files, m_outcome->body());
        m_client->downloadFile(m_server->baseUrl() + u"x"_s, m_outcome->body());
        m_client->kvtWorker(u"4.0.2"_s, u"op"_s, {}, files, m_outcome->work());
    }
    WAIT_COMPARE(m_server->requestCount(), 10);
    m_client.reset();
    // A client that lives on shows that the loop has turned and that nothing of the old one is left.
    VoxApiClient other;
    other.setApiBase(m_server->baseUrl());
    m_server->answerAlways(answerWith("{}"));
    Outcome after;
    other.getJson(u"after"_s, after.json());
    WAIT_COMPARE(after.calls, 1);
    QCOMPARE(m_outcome->calls, 0);
}

void TestVoxApiClient::eachRequestHasItsOwnManagerThatGoes()
{
    m_server->answerAlways(holdRequest());
    m_client->getJson(u"a"_s, m_outcome->json());
    m_client->postJson(u"b"_s, {}, m_outcome->json());
    QCOMPARE(m_client->findChildren<QNetworkAccessManager *>().size(), 2);
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    m_server->answerHeld(0, answerWith("{}"));
    m_server->answerHeld(1, answerWith("{}"));
    WAIT_COMPARE(m_outcome->calls, 2);
    WAIT_COMPARE(m_client->findChildren<QNetworkAccessManager *>().size(), 0);
    WAIT_COMPARE(m_client->findChildren<QNetworkReply *>().size(), 0);
    QCOMPARE(m_outcome->calls, 2);
}

KVTEDITOR_TEST_MAIN(TestVoxApiClient)
#include "tst_VoxApiClient.moc"
