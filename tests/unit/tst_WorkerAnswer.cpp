#include "api/VoxApiClient.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

class TestWorkerAnswer : public QObject
{
    Q_OBJECT

private slots:
    void file_data();
    void file();
    void json_data();
    void json();
    void failure_data();
    void failure();
};

void TestWorkerAnswer::file_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");

    QTest::newRow("bytes") << QByteArray("KVT\0\1\xff", 6) << QString();
    QTest::newRow("one-nul") << QByteArray("\0", 1) << QString();
    QTest::newRow("html") << QByteArray("<html>busy</html>") << QString();
    QTest::newRow("blank-before-broken-brace") << QByteArray(" {x") << QString();
    QTest::newRow("array") << QByteArray("[1]") << QString();
    QTest::newRow("transport-error-beside-bytes") << QByteArray("half a file") << u"Connection closed"_s;
    QTest::newRow("transport-error-beside-html") << QByteArray("<html>502</html>") << u"Bad gateway"_s;
}

void TestWorkerAnswer::file()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    const WorkerResult result = classifyWorkerAnswer(body, {}, error);
    QVERIFY(result.ok);
    QVERIFY(!result.isJson);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.text, QString());
    QCOMPARE(result.object, QJsonObject());
    QCOMPARE(result.data, body);
}

void TestWorkerAnswer::json_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("transportError");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("error");

    const QString none;
    const auto row = [&none](const char *name, const QByteArray &body, bool ok, const QString &error) {
        QTest::newRow(name) << body << none << ok << error;
    };
    row("ok", R"({"status":"ok"})", true, none);
    row("ok-with-message", R"({"status":"ok","message":"m","error":"e"})", true, none);
    row("ok-blank-before", "\n {\"status\":\"ok\"}", true, none);
    row("ok-in-capitals", R"({"status":"OK"})", false, u"Worker error: OK"_s);
    row("ok-with-blank", R"({"status":"ok "})", false, u"Worker error: ok "_s);
    row("fail", R"({"status":"fail"})", false, u"Worker error: fail"_s);
    row("message", R"({"status":"fail","message":"m","error":"e"})", false, u"m"_s);
    row("message-empty", R"({"status":"fail","message":"","error":"e"})", false, u"e"_s);
    row("message-missing", R"({"status":"fail","error":"e"})", false, u"e"_s);
    row("message-number", R"({"status":"fail","message":12.0})", false, u"12"_s);
    row("message-wrong-type", R"({"status":"fail","message":["m"],"error":"e"})", false, u"e"_s);
    row("both-empty", R"({"status":"fail","message":"","error":""})", false, u"Worker error: fail"_s);
    row("status-missing", R"({"a":1})", false, u"Worker error: "_s);
    row("status-number", R"({"status":1})", false, u"Worker error: 1"_s);
    row("status-boolean", R"({"status":true})", false, u"Worker error: "_s);
    row("empty-object", "{}", false, u"Worker error: "_s);
    row("does-not-parse", "{\"status\":\"ok\"", false, u"Worker error: "_s);
    row("only-brace", "{", false, u"Worker error: "_s);
    row("not-ascii", "{\"status\":\"fail\",\"message\":\"caf\xc3\xa9\"}", false, u"caf\u00e9"_s);
    QTest::newRow("transport-error-beside-ok")
        << QByteArray(R"({"status":"ok"})") << u"HTTP 500"_s << true << none;
    QTest::newRow("transport-error-beside-message")
        << QByteArray(R"({"status":"fail","message":"No credits."})") << u"HTTP 402"_s << false
        << u"No credits."_s;
    QTest::newRow("transport-error-beside-broken-object")
        << QByteArray("{\"status\":\"o") << u"Connection closed"_s << false << u"Worker error: "_s;
}

void TestWorkerAnswer::json()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, transportError);
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    const WorkerResult result = classifyWorkerAnswer(body, object, transportError);
    QVERIFY(result.isJson);
    QTEST(result.ok, "ok");
    QTEST(result.error, "error");
    QCOMPARE(result.text, QString::fromUtf8(body));
    QCOMPARE(result.object, object);
    QCOMPARE(result.data, QByteArray());
}

void TestWorkerAnswer::failure_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("transportError");
    QTest::addColumn<QString>("error");

    for (const auto &[name, body] : {std::pair("null", QByteArray()), std::pair("empty", QByteArray(""))}) {
        QTest::addRow("transport-error-%s", name)
            << body << u"Connection refused"_s << u"Connection refused"_s;
        QTest::addRow("no-error-%s", name) << body << QString() << u"Worker returned empty response."_s;
    }
}

void TestWorkerAnswer::failure()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, transportError);
    const WorkerResult result = classifyWorkerAnswer(body, {}, transportError);
    QVERIFY(!result.ok);
    QVERIFY(!result.isJson);
    QTEST(result.error, "error");
    QCOMPARE(result.text, QString());
    QCOMPARE(result.object, QJsonObject());
    QCOMPARE(result.data, QByteArray());
}

KVTEDITOR_TEST_MAIN(TestWorkerAnswer)
#include "tst_WorkerAnswer.moc"
