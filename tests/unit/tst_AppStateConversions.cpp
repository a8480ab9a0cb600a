#include "app/AppState.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QString inDocuments(const QString &name)
{
    return TestEnvironment::documents() + u'/' + name;
}

} // namespace

class TestAppStateConversions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void noInputSendsNothing();
    void requestHoldsFieldsAndFiles();
    void inputWithoutNameIsCalledInputBin();
    void busyFromSendingToTheEnd_data();
    void busyFromSendingToTheEnd();
    void fileIsSavedAndRevealed();
    void kvtResultBecomesTheOpenFile_data();
    void kvtResultBecomesTheOpenFile();
    void savedFileReplacesEarlierOne();
    void saveFailureIsReported();
    void failures_data();
    void failures();
    void jsonAnswerIsShown_data();
    void jsonAnswerIsShown();
    void partialFileBesideTransportErrorIsSaved();
    void secondCallWhileBusy();
    void failureKeepsTheOpenFile();
    void nextConversionWorksAfterFailure();
    void destroyedWhileRequestIsHeld();

private:
    void convert(const QString &outName = u"out.bin"_s)
    {
        m_state->workerConvert(u"convert_x"_s, "input", u"in.kvt"_s, {}, {}, outName);
    }

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateConversions::init()
{
    m_server = std::make_unique<RawHttpServer>();
    m_desktop = std::make_unique<UrlRecorder>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
}

void TestAppStateConversions::cleanup()
{
    m_state.reset();
    m_server.reset();
    m_desktop.reset();
    QDir(TestEnvironment::documents()).removeRecursively();
    QFile::remove(TestEnvironment::documents());
}

void TestAppStateConversions::noInputSendsNothing()
{
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->workerConvert(u"convert_x"_s, {}, u"in.kvt"_s, {}, {{u"extra"_s, "bytes"}}, u"out.bin"_s);
    QCOMPARE(m_state->status(), u"No input file."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(busy.count(), 0);
    QVERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
}

void TestAppStateConversions::requestHoldsFieldsAndFiles()
{
    m_state->workerConvert(u"convert_x"_s, "input", u"in.kvt"_s, {{u"xcal_mode"_s, u"flat"_s}},
                           {{u"header"_s, "H"}, {u"export"_s, "E"}}, u"out.bin"_s);
    WAIT_VERIFY(!m_state->busy());
    const RecordedRequest request = m_server->request(0);
    QCOMPARE(request.requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    const QList<FormPart> parts = formParts(request);
    QByteArrayList dispositions;
    QByteArrayList bodies;
    for (const FormPart &part : parts) {
        dispositions.append(part.header("Content-Disposition").mid(11));
        bodies.append(part.body);
    }
    QCOMPARE(dispositions,
             QByteArrayList({"name=\"operation\"", "name=\"version\"", "name=\"xcal_mode\"",
                             "name=\"file\"; filename=\"in.kvt\"", "name=\"header\"; filename=\"header.bin\"",
                             "name=\"export\"; filename=\"export.bin\""}));
    QCOMPARE(bodies, QByteArrayList({"convert_x", "4.0.2", "flat", "input", "H", "E"}));
}

void TestAppStateConversions::inputWithoutNameIsCalledInputBin()
{
    m_state->workerConvert(u"convert_x"_s, "input", {}, {}, {}, u"out.bin"_s);
    WAIT_VERIFY(!m_state->busy());
    QCOMPARE(formParts(m_server->request(0)).last().header("Content-Disposition"),
             QByteArray("form-data; name=\"file\"; filename=\"input.bin\""));
}

void TestAppStateConversions::busyFromSendingToTheEnd_data()
{
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("file") << httpAnswer(200, "bytes");
    QTest::newRow("json") << httpAnswer(200, R"({"status":"ok"})");
    QTest::newRow("refused") << httpAnswer(200, R"({"status":"no"})");
    QTest::newRow("closed-without-a-byte") << QByteArray();
}

void TestAppStateConversions::busyFromSendingToTheEnd()
{
    QFETCH(QByteArray, answer);
    m_server->answerAlways(holdRequest());
    QList<bool> seen;
    connect(m_state.get(), &AppState::busyChanged, this, [&] { seen.append(m_state->busy()); });
    convert();
    QCOMPARE(seen, QList<bool>({true}));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QVERIFY(m_state->busy());
    m_server->answerHeld(0, {answer});
    WAIT_COMPARE(seen, QList<bool>({true, false}));
    WAIT_VERIFY(!m_state->status().isEmpty());
}

void TestAppStateConversions::fileIsSavedAndRevealed()
{
    m_server->answerAlways(answerWith(QByteArray("BIN\0\xff", 5)));
    convert(u"truck_efi.bin"_s);
    WAIT_COMPARE(m_state->status(), u"Saved truck_efi.bin"_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(contentOf(inDocuments(u"truck_efi.bin"_s)), QByteArray("BIN\0\xff", 5));
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(TestEnvironment::documents())});
    QCOMPARE(m_state->fileName(), QString());
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateConversions::kvtResultBecomesTheOpenFile_data()
{
    QTest::addColumn<QString>("outName");
    QTest::addColumn<bool>("opened");

    QTest::newRow("kvt") << u"imported.kvt"_s << true;
    QTest::newRow("KVT") << u"IMPORTED.KVT"_s << true;
    QTest::newRow("only-suffix") << u".kvt"_s << true;
    QTest::newRow("bin") << u"kvt.bin"_s << false;
    QTest::newRow("kvt-in-the-middle") << u"a.kvt.zip"_s << false;
    QTest::newRow("no-dot") << u"akvt"_s << false;
}

void TestAppStateConversions::kvtResultBecomesTheOpenFile()
{
    QFETCH(QString, outName);
    QFETCH(bool, opened);
    m_server->answerAlways(answerWith("produced"));
    convert(outName);
    WAIT_COMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->fileName(), opened ? outName : QString());
    QCOMPARE(m_state->currentKvtBytes(), opened ? QByteArray("produced") : QByteArray());
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_server->requestCount(), opened ? 2 : 1);
    QCOMPARE(formField(m_server->request(1), "operation"), opened ? QByteArray("kvt_info") : QByteArray());
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
}

void TestAppStateConversions::savedFileReplacesEarlierOne()
{
    m_server->answerNext(answerWith("a long first result"));
    m_server->answerNext(answerWith("second"));
    convert();
    WAIT_VERIFY(!m_state->busy());
    convert();
    WAIT_VERIFY(!m_state->busy());
    QCOMPARE(contentOf(inDocuments(u"out.bin"_s)), QByteArray("second"));
}

void TestAppStateConversions::saveFailureIsReported()
{
    QVERIFY(QDir().mkpath(inDocuments(u"imported.kvt"_s)));
    m_server->answerAlways(answerWith("produced"));
    convert(u"imported.kvt"_s);
    WAIT_COMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->status().isEmpty());
    QVERIFY(!m_state->busy());
    QCOMPARE(m_state->fileName(), QString());
    QCOMPARE(m_desktop->opened.size(), 0);
}

void TestAppStateConversions::failures_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");

    QTest::newRow("empty") << httpAnswer(200, {}) << u"Worker returned empty response."_s;
    QTest::newRow("message") << httpAnswer(200, R"({"status":"fail","message":"Not a KVT.","error":"e"})")
                             << u"Not a KVT."_s;
    QTest::newRow("error") << httpAnswer(200, R"({"status":"fail","message":"","error":"Bad header."})")
                           << u"Bad header."_s;
    QTest::newRow("status-only") << httpAnswer(200, R"({"status":"fail"})") << u"Worker error: fail"_s;
    QTest::newRow("empty-object") << httpAnswer(200, "{}") << u"Worker error: "_s;
    QTest::newRow("broken-json") << httpAnswer(200, "{\"status\":") << u"Worker error: "_s;
    QTest::newRow("500-json") << httpAnswer(500, R"({"status":"fail","message":"Overloaded."})")
                              << u"Overloaded."_s;
    // An empty text here stands for one of Qt's own.
    QTest::newRow("500-empty") << httpAnswer(500, {}) << QString();
    QTest::newRow("closed-without-a-byte") << QByteArray() << QString();
}

void TestAppStateConversions::failures()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    m_server->answerAlways({answer});
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    convert();
    WAIT_VERIFY(!m_state->busy());
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->status().isEmpty());
    QVERIFY(status.isEmpty() || m_state->status() == status);
    QCOMPARE(changes.count(), 1);
    QVERIFY(!QFileInfo::exists(TestEnvironment::documents()));
    QCOMPARE(m_desktop->opened.size(), 0);
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateConversions::jsonAnswerIsShown_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("status");

    const QByteArray start = R"({"status":"ok","note":")";
    const auto answer = [&start](int length) {
        return start + QByteArray(length - start.size() - 2, 'x') + "\"}";
    };
    QTest::newRow("short") << QByteArray(R"({"status":"ok"})") << uR"({"status":"ok"})"_s;
    QTest::newRow("240") << answer(240) << QString::fromUtf8(answer(240));
    QTest::newRow("241") << answer(241) << QString::fromUtf8(start) + QString(216, u'x') + u'"';
    QTest::newRow("300") << answer(300) << QString::fromUtf8(start) + QString(217, u'x');
    QTest::newRow("300-letters-of-two-bytes") << start + QByteArray("\xc3\xa9").repeated(300) + "\"}"
                                              << QString::fromUtf8(start) + QString(217, u'\u00e9');
}

void TestAppStateConversions::jsonAnswerIsShown()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, status);
    m_server->answerAlways(answerWith(body));
    convert();
    WAIT_VERIFY(!m_state->busy());
    QCOMPARE(m_state->status(), status);
    QCOMPARE(m_state->statusOK(), 1);
    QVERIFY(!QFileInfo::exists(TestEnvironment::documents()));
}

void TestAppStateConversions::partialFileBesideTransportErrorIsSaved()
{
    m_server->answerAlways({httpAnswer(502, "<html>Bad gateway</html>")});
    // What shows that the file may be none.
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(u"^An answer of 24 bytes came with an error: .* - server replied: "_s));
    convert();
    WAIT_COMPARE(m_state->status(), u"Saved out.bin"_s);
    QCOMPARE(contentOf(inDocuments(u"out.bin"_s)), QByteArray("<html>Bad gateway</html>"));
}

void TestAppStateConversions::secondCallWhileBusy()
{
    m_server->answerAlways(holdRequest());
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    convert(u"first.bin"_s);
    convert(u"second.bin"_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    QVERIFY(m_state->busy());
    m_server->answerHeld(0, answerWith("one"));
    WAIT_VERIFY(!m_state->busy());
    m_server->answerHeld(1, answerWith("two"));
    WAIT_VERIFY(QFileInfo::exists(inDocuments(u"second.bin"_s))
                && QFileInfo::exists(inDocuments(u"first.bin"_s)));
    QVERIFY(!m_state->busy());
    QCOMPARE(m_state->statusOK(), 1);
}

void TestAppStateConversions::failureKeepsTheOpenFile()
{
    m_server->answerNext(answerWith("produced"));
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"V"})"));
    m_server->answerNext({QByteArray()});
    convert(u"open.kvt"_s);
    WAIT_COMPARE(m_state->vin(), u"V"_s);
    QVERIFY(m_state->hexModel()->applyPatch(0, "P"));
    m_state->hexModel()->setCursor(4);
    convert(u"other.kvt"_s);
    WAIT_COMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->fileName(), u"open.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("Produced"));
    QCOMPARE(m_state->hexModel()->cursor(), 4);
    QCOMPARE(m_state->vin(), u"V"_s);
    QCOMPARE(QDir(TestEnvironment::documents()).entryList(QDir::Files), QStringList{u"open.kvt"_s});
}

void TestAppStateConversions::nextConversionWorksAfterFailure()
{
    m_server->answerNext({QByteArray(), RawAnswer::Ending::Reset});
    m_server->answerNext(answerWith("good"));
    convert();
    WAIT_COMPARE(m_state->statusOK(), 0);
    convert();
    WAIT_COMPARE(m_state->status(), u"Saved out.bin"_s);
    QCOMPARE(contentOf(inDocuments(u"out.bin"_s)), QByteArray("good"));
}

void TestAppStateConversions::destroyedWhileRequestIsHeld()
{
    m_server->answerAlways(holdRequest());
    convert();
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    m_state.reset();
    m_server->answerHeld(0, answerWith("too late"));
    m_desktop.reset();
    init();
    m_server->answerAlways(answerWith("in time"));
    convert(u"later.bin"_s);
    WAIT_COMPARE(m_state->status(), u"Saved later.bin"_s);
    QCOMPARE(QDir(TestEnvironment::documents()).entryList(QDir::Files), QStringList{u"later.bin"_s});
}

KVTEDITOR_TEST_MAIN(TestAppStateConversions)
#include "tst_AppStateConversions.moc"
