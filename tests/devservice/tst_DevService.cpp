#include "DevService.h"
#include "Exchange.h"
#include "SampleData.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest/QSignalSpy>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

const Fields infoFields = {{"operation", "kvt_info"}, {"version", "4.0.2"}};

QString worker(const DevService &service)
{
    return service.apiBase() + "kvt_worker/process.aspx"_L1;
}

} // namespace

class TestDevService : public QObject
{
    Q_OBJECT

private slots:
    void infoOfWhatWasReallySent();
    void overwrittenVinComesBackOverwritten();
    void secondModuleFillsTheSecondKeys();
    void workerRefuses_data();
    void workerRefuses();
    void updateNamesVersionAndReachableDownload();
    void unknownPathAndMethodAreJsonErrors();
    void requestsAreRecordedAsSent();
    void largeUploadArrivesWhole();
    void bodyThatIsCutIsRecordedAsIncomplete();
    void noHttpIsRefusedAndNotCounted();
    void portInUseIsReported();
    void listensOnLoopbackOnly();
    void manyRequestsAtOnce();
    void setAnswerReplacesTheAnswer();
    void stopIsIdempotentAndStartsAgain();
    void stopEndsIdleConnections();
};

void TestDevService::infoOfWhatWasReallySent()
{
    DevService service;
    QVERIFY(service.start());
    const SampleTune tune = SampleData::tune(1, 7);
    const Outcome outcome = postForm(worker(service), infoFields, SampleContainer::write(tune));
    QCOMPARE(outcome.status, 200);
    const QJsonObject json = outcome.json();
    const SampleModule &module = tune.modules.first();
    const QMap<QString, QString> expected = {
        {u"status"_s, u"ok"_s},
        {u"created"_s, tune.created},
        {u"softwareVersion"_s, tune.softwareVersion},
        {u"interfaceCalId"_s, tune.interfaceCalId},
        {u"vin1"_s, module.vin},
        {u"serial1"_s, module.serial},
        {u"mainOs"_s, module.mainOs},
        {u"gmSystem"_s, module.rows[0].value},
        {u"gmFuel"_s, module.rows[1].value},
        {u"gmSpeedometer"_s, module.rows[2].value},
        {u"gmEngineDiag"_s, module.rows[3].value},
        {u"gmEngineOp"_s, module.rows[4].value},
    };
    for (auto entry = expected.begin(); entry != expected.end(); ++entry)
        QCOMPARE(json.value(entry.key()).toString(), entry.value());
    QVERIFY(!module.rows[4].value.isEmpty());
    const QJsonArray modules = json.value("modules"_L1).toArray();
    QCOMPARE(modules.size(), 1);
    QCOMPARE(modules[0].toObject().value("title"_L1).toString(), module.title);
    QCOMPARE(modules[0].toObject().value("mainOs"_L1).toString(), module.mainOs);
    const QJsonArray rows = modules[0].toObject().value("rows"_L1).toArray();
    QCOMPARE(rows.size(), 6);
    QCOMPARE(rows[5].toObject().value("label"_L1).toString(), module.rows[5].label);
    QCOMPARE(rows[5].toObject().value("value"_L1).toString(), module.rows[5].value);
}

void TestDevService::overwrittenVinComesBackOverwritten()
{
    DevService service;
    QVERIFY(service.start());
    QByteArray bytes = SampleContainer::write(SampleData::tune(1, 1));
    const qsizetype at = bytes.indexOf(SampleData::vin(1).toLatin1());
    QVERIFY(at > 0);
    bytes.replace(at, 17, "2FTRX18W1XCA01212");
    const QJsonObject json = postForm(worker(service), infoFields, bytes).json();
    QCOMPARE(json.value("vin1"_L1).toString(), u"2FTRX18W1XCA01212"_s);
    QCOMPARE(json.value("modules"_L1)[0]["vin"_L1].toString(), u"2FTRX18W1XCA01212"_s);
}

void TestDevService::secondModuleFillsTheSecondKeys()
{
    DevService service;
    QVERIFY(service.start());
    SampleTune tune = SampleData::tune(5, 3);
    tune.modules[1].vin = u"SECOND"_s;
    const QJsonObject json = postForm(worker(service), infoFields, SampleContainer::write(tune)).json();
    QCOMPARE(json.value("vin2"_L1).toString(), u"SECOND"_s);
    QCOMPARE(json.value("serial2"_L1).toString(), tune.modules[1].serial);
    QCOMPARE(json.value("modules"_L1).toArray().size(), 5);
}

void TestDevService::workerRefuses_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("message");
    const QByteArray file = SampleContainer::write(SampleData::tune(1, 1));
    QTest::newRow("no-version") << Fields{{"operation", "kvt_info"}} << file << u"No version"_s;
    QTest::newRow("no-operation") << Fields{{"version", "4.0.2"}} << file << u"No operation"_s;
    QTest::newRow("no-file") << infoFields << QByteArray() << u"No file"_s;
    QTest::newRow("empty-file") << infoFields << QByteArray("") << u"No file"_s;
    QTest::newRow("no-container") << infoFields << QByteArray("MZ") << u"Not a sample container at byte 0"_s;
    QTest::newRow("other-operation") << Fields{{"version", "4.0.2"}, {"operation", "make_tea"}} << file
                                     << u"Operation not supported: make_tea"_s;
}

void TestDevService::workerRefuses()
{
    QFETCH(Fields, fields);
    QFETCH(QByteArray, file);
    QFETCH(QString, message);
    DevService service;
    QVERIFY(service.start());
    const Outcome outcome = postForm(worker(service), fields, file);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"error"_s);
    QCOMPARE(outcome.json().value("message"_L1).toString(), message);
}

void TestDevService::updateNamesVersionAndReachableDownload()
{
    DevService service({.port = 0, .certificate = {}, .key = {}, .updateVersion = u"5.1"_s});
    QVERIFY(service.start());
    const QJsonObject json = get(service.apiBase() + "updates/kvteditornew/update.json"_L1).json();
    QCOMPARE(json.value("latest_version"_L1).toString(), u"5.1"_s);
    const Outcome download = get(json.value("download_url"_L1).toString());
    QCOMPARE(download.status, 200);
    QVERIFY(download.body.contains("stand-in"));
}

void TestDevService::unknownPathAndMethodAreJsonErrors()
{
    DevService service;
    QVERIFY(service.start());
    const Outcome unknown = get(service.apiBase() + "no/such.aspx"_L1);
    QCOMPARE(unknown.status, 404);
    QCOMPARE(unknown.json().value("message"_L1).toString(), u"No such endpoint: /api/no/such.aspx"_s);
    const Outcome wrong = get(service.apiBase() + "feedback.aspx"_L1);
    QCOMPARE(wrong.status, 405);
    QCOMPARE(wrong.json().value("status"_L1).toString(), u"error"_s);
}

void TestDevService::requestsAreRecordedAsSent()
{
    DevService service;
    QVERIFY(service.start());
    postForm(worker(service), {{"b", "2"}, {"a", "1"}}, "bytes", "my \"file\".kvt");
    get(service.apiBase() + "updates/kvteditornew/update.json?x=1"_L1);
    QCOMPARE(service.requestCount(), 2);
    QCOMPARE(service.connectionCount(), 2);
    QCOMPARE(service.requestCount(u"kvt_worker/process.aspx"_s), 1);
    QCOMPARE(service.requestCount(u"/api/kvt_worker/process.aspx"_s), 1);
    QCOMPARE(service.requestCount(u"feedback.aspx"_s), 0);
    const QList<ServiceRequest> requests = service.requests();
    QCOMPARE(requests.size(), 2);
    const ServiceRequest &form = requests[0];
    QCOMPARE(form.method, "POST");
    QCOMPARE(form.path, u"/api/kvt_worker/process.aspx"_s);
    QVERIFY(form.complete);
    QCOMPARE(form.header("content-length").toLongLong(), form.bodySize);
    QVERIFY(form.bodySize > 100);
    QCOMPARE(form.partNames(), QStringList({u"b"_s, u"a"_s, u"file"_s}));
    QCOMPARE(form.field(u"b"_s), u"2"_s);
    QCOMPARE(form.part(u"file"_s)->fileName, u"my \"file\".kvt"_s);
    QCOMPARE(form.part(u"file"_s)->contentType, "application/octet-stream");
    QCOMPARE(form.part(u"file"_s)->data, "bytes");
    QCOMPARE(form.part(u"none"_s), nullptr);
    QCOMPARE(requests[1].method, "GET");
    QCOMPARE(requests[1].path, u"/api/updates/kvteditornew/update.json"_s);
}

void TestDevService::largeUploadArrivesWhole()
{
    DevService service;
    QVERIFY(service.start());
    SampleTune tune = SampleData::tune(1, 1);
    tune.modules.first().segments.append({u"Large"_s, QByteArray(20'000'000, '\r')});
    const Outcome outcome = postForm(worker(service), infoFields, SampleContainer::write(tune));
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"ok"_s);
    const ServiceRequest request = service.requests().first();
    QVERIFY(request.bodySize > 20'000'000);
    QVERIFY(request.part(u"file"_s)->size > 20'000'000);
    QCOMPARE(request.part(u"file"_s)->data.size(), 1 << 20);
}

void TestDevService::bodyThatIsCutIsRecordedAsIncomplete()
{
    DevService service;
    QVERIFY(service.start());
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, service.port());
    QVERIFY(client.waitForConnected());
    client.write(
        "POST /api/feedback.aspx HTTP/1.1\r\nHost: x\r\nContent-Length: 100\r\n\r\n{\"type\":\"dev\"}");
    QVERIFY(client.waitForBytesWritten());
    client.disconnectFromHost();
    QTRY_COMPARE(service.requestCount(u"feedback.aspx"_s), 1);
    QVERIFY(!service.requests().first().complete);
}

void TestDevService::noHttpIsRefusedAndNotCounted()
{
    DevService service;
    QVERIFY(service.start());
    const RawOutcome outcome = rawExchange(service, "what is this\r\n\r\n");
    QVERIFY2(outcome.bytes.startsWith("HTTP/1.1 400"), outcome.bytes.constData());
    QCOMPARE(service.requestCount(), 0);
    QCOMPARE(service.connectionCount(), 1);
}

void TestDevService::portInUseIsReported()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    DevService service({.port = other.serverPort(), .certificate = {}, .key = {}});
    QString error;
    QVERIFY(!service.start(&error));
    QVERIFY2(error.contains(QString::number(other.serverPort())), qPrintable(error));
    QVERIFY(!service.start());
}

void TestDevService::listensOnLoopbackOnly()
{
    DevService service;
    QVERIFY(service.start());
    // Were the port taken on every address, no other loopback address could have it.
    QTcpServer neighbour;
    QVERIFY(neighbour.listen(QHostAddress(u"127.0.0.2"_s), service.port()));
    QVERIFY(service.apiBase() == u"http://127.0.0.1:%1/api/"_s.arg(service.port()));
}

void TestDevService::manyRequestsAtOnce()
{
    DevService service;
    QVERIFY(service.start());
    std::vector<std::thread> clients;
    std::atomic<int> answered = 0;
    for (int i = 0; i < 8; ++i) {
        clients.emplace_back([&service, &answered] {
            for (int n = 0; n < 20; ++n) {
                const QByteArray body = rawGet(service, "/api/updates/kvteditornew/update.json").bytes;
                answered += body.contains("latest_version") ? 1 : 0;
                service.requests();
            }
        });
    }
    for (std::thread &client : clients)
        client.join();
    QCOMPARE(answered.load(), 160);
    QCOMPARE(service.requestCount(), 160);
}

void TestDevService::setAnswerReplacesTheAnswer()
{
    DevService service;
    QVERIFY(service.start());
    service.setAnswer(u"feedback.aspx"_s, {418, "text/plain", "short and stout", {{"X-Pot", "tea"}}});
    const QString url = service.apiBase() + "feedback.aspx"_L1;
    const Outcome replaced = post(url, ticketOf("dev"));
    QCOMPARE(replaced.status, 418);
    QCOMPARE(replaced.body, "short and stout");
    service.clearAnswers();
    QCOMPARE(post(url, ticketOf("dev")).json().value("ticket_id"_L1).toString(), u"T-1001"_s);
}

void TestDevService::stopIsIdempotentAndStartsAgain()
{
    DevService service;
    service.stop();
    QVERIFY(service.start());
    service.stop();
    service.stop();
    QVERIFY(rawGet(service, "/").refused);
    QVERIFY(service.start());
    QCOMPARE(get(service.apiBase() + "updates/kvteditornew/update.json"_L1).status, 200);
}

void TestDevService::stopEndsIdleConnections()
{
    DevService service;
    QVERIFY(service.start());
    QTcpSocket silent;
    silent.connectToHost(QHostAddress::LocalHost, service.port());
    QVERIFY(silent.waitForConnected());
    QTRY_COMPARE(service.connectionCount(), 1);
    service.stop();
    QTRY_COMPARE(silent.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(service.requestCount(), 0);
}

KVTEDITOR_TEST_MAIN(TestDevService)
#include "tst_DevService.moc"
