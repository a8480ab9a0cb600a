#include "api/TransferMeter.h"
#include "api/VoxApiClient.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <utility>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

void ignore(const QByteArray &, const QJsonObject &, const QString &) { }

using Progress = std::pair<qint64, qint64>;

/// Tells of its progress only when the test does.
class SilentReply : public QNetworkReply
{
public:
    explicit SilentReply(qint64 contentLength = 0)
    {
        QNetworkRequest request;
        request.setHeader(QNetworkRequest::ContentLengthHeader, contentLength);
        setRequest(request);
    }

    void abort() override { }

protected:
    qint64 readData(char *, qint64) override { return -1; }
};

} // namespace

class TestTransferMeter : public QObject
{
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void tellsOfASlowUpload();
    void tellsOfASlowDownload();
    void addsUp_data();
    void addsUp();
    void takesTheLengthFromTheRequest();
    void forgetsWhatHasFinished();
    void saysNothingOfAQuickTransfer();
    void outlivesItsTransfers();
};

void TestTransferMeter::text_data()
{
    QTest::addColumn<qint64>("sent");
    QTest::addColumn<qint64>("toSend");
    QTest::addColumn<qint64>("received");
    QTest::addColumn<qint64>("toReceive");
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << qint64(0) << qint64(0) << qint64(0) << qint64(0) << QString();
    QTest::newRow("begins") << qint64(0) << qint64(1500) << qint64(0) << qint64(0)
                            << u"Sending 0 bytes of 1.5 kB"_s;
    QTest::newRow("sends") << qint64(12'300'000) << qint64(64'000'000) << qint64(0) << qint64(0)
                           << u"Sending 12.3 MB of 64.0 MB"_s;
    QTest::newRow("waits") << qint64(64) << qint64(64) << qint64(0) << qint64(-1) << QString();
    QTest::newRow("receives") << qint64(64) << qint64(64) << qint64(2000) << qint64(4000)
                              << u"Receiving 2.0 kB of 4.0 kB"_s;
    QTest::newRow("unknown-length") << qint64(64) << qint64(64) << qint64(2000) << qint64(-1)
                                    << u"Receiving 2.0 kB"_s;
    QTest::newRow("past-2-GiB") << qint64(0) << qint64(0) << qint64(5'000'000'000) << qint64(6'000'000'000)
                                << u"Receiving 5.0 GB of 6.0 GB"_s;
}

void TestTransferMeter::text()
{
    QFETCH(qint64, sent);
    QFETCH(qint64, toSend);
    QFETCH(qint64, received);
    QFETCH(qint64, toReceive);
    QTEST(transferText({sent, toSend, received, toReceive}), "text");
}

void TestTransferMeter::tellsOfASlowUpload()
{
    // Leaves the request in the system's buffers, which take only a part of it.
    QTcpServer deaf;
    QVERIFY(deaf.listen(QHostAddress::LocalHost));
    deaf.pauseAccepting();
    VoxApiClient client;
    client.setApiBase(u"http://127.0.0.1:%1/api/"_s.arg(deaf.serverPort()));
    TransferMeter meter;
    connect(&client, &VoxApiClient::requestSent, &meter, &TransferMeter::watch);
    meter.setShowDelay(0);
    QStringList answers;
    client.postMultipart(
        u"x"_s, {}, {{u"file"_s, u"a.bin"_s, QByteArray(64 << 20, 'a')}},
        [&](const QByteArray &, const QJsonObject &, const QString &error) { answers.append(error); });
    WAIT_VERIFY(meter.text().startsWith(u"Sending "_s));
    QVERIFY(meter.isRunning());
    QVERIFY2(meter.text().endsWith(u" of 67.1 MB"_s), qPrintable(meter.text()));
    deaf.close();
    WAIT_COMPARE(answers.size(), 1);
    QVERIFY(!answers.constFirst().isEmpty());
    QCOMPARE(meter.text(), QString());
}

void TestTransferMeter::tellsOfASlowDownload()
{
    RawHttpServer server;
    RawAnswer endless;
    endless.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 2000000000\r\n\r\n";
    endless.endless = true;
    server.answerAlways(endless);
    {
        VoxApiClient client;
        client.setApiBase(server.baseUrl());
        TransferMeter meter;
        connect(&client, &VoxApiClient::requestSent, &meter, &TransferMeter::watch);
        meter.setShowDelay(0);
        client.downloadFile(server.baseUrl(), ignore);
        WAIT_VERIFY(meter.text().startsWith(u"Receiving "_s));
        QVERIFY(meter.text().endsWith(u" of 2.0 GB"_s));
    }
    WAIT_VERIFY(server.endlessBytes() > 0);
}

void TestTransferMeter::addsUp_data()
{
    QTest::addColumn<Progress>("sent");
    QTest::addColumn<Progress>("received");
    QTest::addColumn<Progress>("otherSent");
    QTest::addColumn<Progress>("otherReceived");
    QTest::addColumn<QString>("text");

    QTest::newRow("uploads") << Progress{1000, 3000} << Progress{0, 0} << Progress{2000, 6000}
                             << Progress{0, 0} << u"Sending 3.0 kB of 9.0 kB"_s;
    QTest::newRow("upload-beside-download") << Progress{1000, 3000} << Progress{0, 0} << Progress{0, 0}
                                            << Progress{2000, 6000} << u"Sending 1.0 kB of 3.0 kB"_s;
    QTest::newRow("downloads") << Progress{0, 0} << Progress{1000, 3000} << Progress{0, 0}
                               << Progress{2000, 6000} << u"Receiving 3.0 kB of 9.0 kB"_s;
    QTest::newRow("one-length-unknown") << Progress{0, 0} << Progress{1000, 3000} << Progress{0, 0}
                                        << Progress{2000, -1} << u"Receiving 3.0 kB"_s;
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    QTest::newRow("more-than-a-number") << Progress{0, 0} << Progress{1000, most} << Progress{0, 0}
                                        << Progress{2000, most} << u"Receiving 3.0 kB of 9.2 EB"_s;
}

void TestTransferMeter::addsUp()
{
    QFETCH(Progress, sent);
    QFETCH(Progress, received);
    QFETCH(Progress, otherSent);
    QFETCH(Progress, otherReceived);
    QFETCH(QString, text);
    TransferMeter meter;
    meter.setShowDelay(0);
    SilentReply one;
    SilentReply other;
    meter.watch(&one);
    meter.watch(&other);
    emit one.uploadProgress(sent.first, sent.second);
    emit one.downloadProgress(received.first, received.second);
    emit other.uploadProgress(otherSent.first, otherSent.second);
    emit other.downloadProgress(otherReceived.first, otherReceived.second);
    WAIT_COMPARE(meter.text(), text);
}

void TestTransferMeter::takesTheLengthFromTheRequest()
{
    TransferMeter meter;
    meter.setShowDelay(0);
    SilentReply reply(5000);
    meter.watch(&reply);
    // As Qt tells of a body that can be read only once.
    emit reply.uploadProgress(1000, 1000);
    WAIT_COMPARE(meter.text(), u"Sending 1.0 kB of 5.0 kB"_s);
    emit reply.uploadProgress(5000, 5000);
    WAIT_COMPARE(meter.text(), QString());
    emit reply.uploadProgress(0, 0);
    emit reply.downloadProgress(2000, -1);
    WAIT_COMPARE(meter.text(), u"Receiving 2.0 kB"_s);
}

void TestTransferMeter::forgetsWhatHasFinished()
{
    TransferMeter meter;
    meter.setShowDelay(0);
    SilentReply reply;
    meter.watch(&reply);
    emit reply.downloadProgress(2000, 4000);
    WAIT_COMPARE(meter.text(), u"Receiving 2.0 kB of 4.0 kB"_s);
    emit reply.finished();
    QCOMPARE(meter.text(), QString());
}

void TestTransferMeter::saysNothingOfAQuickTransfer()
{
    RawHttpServer server;
    VoxApiClient client;
    client.setApiBase(server.baseUrl());
    // Far longer than the test may take.
    TransferMeter meter;
    connect(&client, &VoxApiClient::requestSent, &meter, &TransferMeter::watch);
    meter.setShowDelay(600'000);
    QSignalSpy changes(&meter, &TransferMeter::textChanged);
    int answers = 0;
    for (int i = 0; i < 5; ++i) {
        client.postMultipart(u"x"_s, {}, {{u"file"_s, u"a.bin"_s, QByteArray(1 << 20, 'a')}},
                             [&](const QByteArray &, const QJsonObject &, const QString &) { ++answers; });
    }
    WAIT_COMPARE(answers, 5);
    QCOMPARE(changes.count(), 0);
}

void TestTransferMeter::outlivesItsTransfers()
{
    RawHttpServer server;
    RawAnswer endless;
    endless.bytes = "HTTP/1.1 200 OK\r\n\r\n";
    endless.endless = true;
    server.answerAlways(endless);
    TransferMeter meter;
    meter.setShowDelay(0);
    {
        QNetworkAccessManager manager;
        meter.watch(manager.get(QNetworkRequest(QUrl(server.baseUrl()))));
        WAIT_VERIFY(meter.text().startsWith(u"Receiving "_s));
    }
    QCOMPARE(meter.text(), QString());
}

KVTEDITOR_TEST_MAIN(TestTransferMeter)

#include "tst_TransferMeter.moc"
