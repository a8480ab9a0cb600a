#include "app/AppState.h"
#include "app/HexEditing.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

} // namespace

class TestAppStateWorkspace : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void open_publishesTheFile();
    void open_sendsKvtInfoRequest();
    void open_requestLeavesBusyAlone();
    void open_announcesFileThenIdentifiersThenStatus();
    void open_createdIsTheModificationTime();
    void open_replacesEverything();
    void open_oddNames_data();
    void open_oddNames();
    void open_failureKeepsEverything_data();
    void open_failureKeepsEverything();

    void info_answerFillsIdentifiers();
    void info_uselessAnswerChangesNothing_data();
    void info_uselessAnswerChangesNothing();
    void info_lateAnswerOfAnEarlierFileIsDropped();
    void info_lateAnswerOfTheSamePathIsDropped();
    void info_nothingIsSentWithoutFile();
    void info_bytesWithoutFileHaveAName();
    void info_answerAfterSaveUnderAnotherNameCounts();
    void info_destroyedWhileRequestIsHeld();
    void applyKvtInfoJson_announcesOnce();
    void moduleOneOs_isTheFirstModules();

    void currentBytes_hexEditsCountAtOnce();
    void dialogFolder_isWhereTheOpenFileIs();
    void dialogFolder_withoutFile();
    void suggestName_data();
    void suggestName();

    void save_withoutFileIsRefused();
    void save_writesAndRenames();
    void save_writesHexEditsWithoutWriteBack();
    void save_keepsIdentifiersAndSendsNothing();
    void save_failureKeepsPathAndName();
    void save_overItself();
    void save_overItselfThroughALink_data();
    void save_overItselfThroughALink();
    void save_afterTheFolderWasRemoved();

    void hexFind_emptyQuery();
    void hexFind_stepsAndWraps();
    void hexFind_notFoundKeepsCursor();
    void hexFindPrevious_stepsAndWraps();
    void hexGoTo_data();
    void hexGoTo();
    void hexFind_upperCasesTheWholeMessage();
    void hexFind_withoutFile();
    void hexFind_keepsTheMatch_data();
    void hexFind_keepsTheMatch();
    void hexFind_announcesNothingTwice();
    void hexPatch_data();
    void hexPatch();
    void hexPatch_withoutFile();
    void hexWriteBack_replacesHeldBytesOnly();
    void hexWriteBack_closedEditorStaysClosed();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    /// A file with this content, open, its information request answered.
    bool openFile(const QString &name, const QByteArray &content);

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateWorkspace::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_server = std::make_unique<RawHttpServer>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
}

void TestAppStateWorkspace::cleanup()
{
    m_state.reset();
    m_server.reset();
}

bool TestAppStateWorkspace::openFile(const QString &name, const QByteArray &content)
{
    const auto idle = [this] { return m_state->findChild<VoxApiClient *>()->children().isEmpty(); };
    m_state->openKvt(makeFile(inDir(name), content));
    return waitUntil(idle) && m_state->fileName() == name;
}

void TestAppStateWorkspace::open_publishesTheFile()
{
    makeFile(inDir(u"truck.kvt"_s), QByteArray("KVT\0\xff", 5));
    m_state->openKvt(inDir(u"truck.kvt"_s));
    QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
    QCOMPARE(m_state->status(), u"Opened truck.kvt \u2014 5 bytes."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->hexModel()->bytes(), QByteArray("KVT\0\xff", 5));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("KVT\0\xff", 5));
}

void TestAppStateWorkspace::open_sendsKvtInfoRequest()
{
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    const RecordedRequest request = m_server->request(0);
    QCOMPARE(request.requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    QCOMPARE(formParts(request).size(), 3);
    QCOMPARE(formField(request, "operation"), QByteArray("kvt_info"));
    QCOMPARE(formField(request, "version"), QByteArray("4.0.2"));
    QCOMPARE(formField(request, "file"), QByteArray("bytes"));
    QCOMPARE(formParts(request).last().header("Content-Disposition"),
             QByteArray("form-data; name=\"file\"; filename=\"truck.kvt\""));
}

void TestAppStateWorkspace::open_requestLeavesBusyAlone()
{
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QCOMPARE(busy.count(), 0);
    QVERIFY(!m_state->busy());
}

void TestAppStateWorkspace::open_announcesFileThenIdentifiersThenStatus()
{
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    QStringList order;
    connect(m_state.get(), &AppState::fileChanged, this, [&] {
        order.append(u"file "_s + m_state->fileName() + u' '
                     + QString::number(m_state->hexModel()->byteCount()));
    });
    connect(m_state.get(), &AppState::identifiersChanged, this, [&] {
        order.append(m_state->created().isEmpty() ? u"identifiers too early"_s : u"identifiers"_s);
    });
    connect(m_state.get(), &AppState::statusChanged, this, [&] { order.append(u"status"_s); });
    m_state->openKvt(inDir(u"truck.kvt"_s));
    QCOMPARE(order, QStringList({u"file truck.kvt 5"_s, u"identifiers"_s, u"status"_s}));
}

void TestAppStateWorkspace::open_createdIsTheModificationTime()
{
    const QString path = inDir(u"truck.kvt"_s);
    makeFile(path, "bytes");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(
        file.setFileTime(QDateTime(QDate(2024, 3, 5), QTime(14, 7, 59)), QFileDevice::FileModificationTime));
    file.close();
    m_state->openKvt(path);
    QCOMPARE(m_state->created(), u"2024-03-05 14:07"_s);
    m_state->applyKvtInfoJson(uR"({"created":"2019-01-01"})"_s);
    QCOMPARE(m_state->created(), u"2019-01-01"_s);
}

void TestAppStateWorkspace::open_replacesEverything()
{
    QVERIFY(openFile(u"first.kvt"_s, QByteArray(100, 'a')));
    m_state->setVin(u"typed"_s);
    m_state->applyKvtInfoJson(uR"({"modules":[{"title":"A","mainOs":"1"}]})"_s);
    m_state->hexModel()->setCursor(80);
    QVERIFY(m_state->hexModel()->applyPatch(0, "patched"));
    QVERIFY(openFile(u"second.kvt"_s, "second file"));
    QCOMPARE(m_state->fileName(), u"second.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("second file"));
    QCOMPARE(m_state->hexModel()->cursor(), 10);
    QCOMPARE(m_state->vin(), QString());
    QCOMPARE(m_state->modules(), QVariantList());
    QCOMPARE(m_state->moduleOneOs(), QString());
    QVERIFY(!m_state->created().isEmpty());
}

void TestAppStateWorkspace::open_oddNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("announced");

    QTest::newRow("blanks-and-signs") << u" a #1 100% ?[b] &.kvt"_s << QByteArray(" a #1 100% ?[b] &.kvt");
    QTest::newRow("tag") << u"<b>x.kvt"_s << QByteArray("<b>x.kvt");
    QTest::newRow("placeholder") << u"%1%2.kvt"_s << QByteArray("%1%2.kvt");
    QTest::newRow("quotes") << u"a\"b.kvt"_s << QByteArray("a\"b.kvt");
    QTest::newRow("line-feed") << u"a\nb.kvt"_s << QByteArray("a_b.kvt");
    QTest::newRow("accent") << u"caf\u00e9.kvt"_s << QByteArray("caf\xc3\xa9.kvt");
    QTest::newRow("no-suffix") << u"tune"_s << QByteArray("tune");
}

void TestAppStateWorkspace::open_oddNames()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, announced);
    QVERIFY(openFile(name, "bytes"));
    QCOMPARE(m_state->fileName(), name);
    QCOMPARE(m_state->status(), u"Opened "_s + name + u" \u2014 5 bytes."_s);
    const QList<FormPart> parts = formParts(m_server->request(0));
    QCOMPARE(parts.size(), 3);
    QCOMPARE(parts.last().header("Content-Disposition"),
             "form-data; name=\"file\"; filename=\"" + announced + '"');
}

void TestAppStateWorkspace::open_failureKeepsEverything_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("status");

    QTest::newRow("missing") << u"missing.kvt"_s << QString();
    QTest::newRow("empty-file") << u"empty.kvt"_s << u"Could not read file."_s;
    QTest::newRow("folder") << u"folder"_s << QString();
    QTest::newRow("fifo") << u"fifo"_s << QString();
    QTest::newRow("below-a-file") << u"empty.kvt/x"_s << QString();
    QTest::newRow("more-than-2-gib") << u"sparse.kvt"_s << QString();
}

void TestAppStateWorkspace::open_failureKeepsEverything()
{
    QFETCH(QString, name);
    QFETCH(QString, status);
    makeFile(inDir(u"empty.kvt"_s), {});
    makeFile(inDir(u"sparse.kvt"_s), {});
    QVERIFY(QFile::resize(inDir(u"sparse.kvt"_s), 3'000'000'000));
    QVERIFY(QDir(m_dir->path()).mkpath(u"folder"_s));
    QCOMPARE(::mkfifo(QFile::encodeName(inDir(u"fifo"_s)).constData(), 0600), 0);
    QVERIFY(openFile(u"open.kvt"_s, "the open file"));
    m_state->setVin(u"typed"_s);
    m_state->hexModel()->setCursor(3);
    QVERIFY(m_state->hexModel()->applyPatch(0, "T"));
    const QString created = m_state->created();
    QSignalSpy file(m_state.get(), &AppState::fileChanged);
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    QSignalSpy statusChanges(m_state.get(), &AppState::statusChanged);

    m_state->openKvt(inDir(name));

    QVERIFY(!m_state->status().isEmpty());
    QVERIFY(status.isEmpty() || m_state->status() == status);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(statusChanges.count(), 1);
    QCOMPARE(file.count(), 0);
    QCOMPARE(identifiers.count(), 0);
    QCOMPARE(m_state->fileName(), u"open.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("The open file"));
    QCOMPARE(m_state->hexModel()->cursor(), 3);
    QCOMPARE(m_state->vin(), u"typed"_s);
    QCOMPARE(m_state->created(), created);
    QCOMPARE(m_server->requestCount(), 1);
    QVERIFY(openFile(u"next.kvt"_s, "next"));
}

void TestAppStateWorkspace::info_answerFillsIdentifiers()
{
    m_server->answerAlways(answerWith(
        R"({"status":"ok","kvt":{"identifiers":{"vin":"V","serial1":"S","mainOs":"12345678",)"
        R"("gmSystem":"E38",)"
        R"("gmFuel":"F","gmSpeedometer":"SP","gmEngineDiag":"ED","gmEngineOp":"EO","interfaceCalId":"IC",)"
        R"("created":"2019","softwareVersion":"3.1"}}})"));
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    const QString opened = m_state->status();
    WAIT_COMPARE(m_state->vin(), u"V"_s);
    QCOMPARE(m_state->serial(), u"S"_s);
    QCOMPARE(m_state->mainOS(), u"12345678"_s);
    QCOMPARE(m_state->system(), u"E38"_s);
    QCOMPARE(m_state->fuel(), u"F"_s);
    QCOMPARE(m_state->speedometer(), u"SP"_s);
    QCOMPARE(m_state->engineDiag(), u"ED"_s);
    QCOMPARE(m_state->engineOp(), u"EO"_s);
    QCOMPARE(m_state->interfaceID(), u"IC"_s);
    QCOMPARE(m_state->created(), u"2019"_s);
    QCOMPARE(m_state->editorVersion(), u"3.1"_s);
    QCOMPARE(m_state->status(), opened);
}

void TestAppStateWorkspace::info_uselessAnswerChangesNothing_data()
{
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("status-not-ok") << httpAnswer(200, R"({"status":"error","vin":"V"})");
    QTest::newRow("status-missing") << httpAnswer(200, R"({"vin":"V"})");
    QTest::newRow("file") << httpAnswer(200, "bytes");
    QTest::newRow("html") << httpAnswer(200, "<html></html>");
    QTest::newRow("empty") << httpAnswer(200, {});
    QTest::newRow("500") << httpAnswer(500, "<html></html>");
    QTest::newRow("not-http") << QByteArray("220 ready\r\n");
    QTest::newRow("closed-without-a-byte") << QByteArray();
    QTest::newRow("broken-json") << httpAnswer(200, R"({"status":"ok","vin":"V")");
}

void TestAppStateWorkspace::info_uselessAnswerChangesNothing()
{
    QFETCH(QByteArray, answer);
    m_server->answerAlways({answer});
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    const QString opened = m_state->status();
    const QString created = m_state->created();
    QSignalSpy statusChanges(m_state.get(), &AppState::statusChanged);
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_server->requestCount(), 1);
    QCOMPARE(statusChanges.count(), 0);
    QCOMPARE(identifiers.count(), 0);
    QCOMPARE(m_state->status(), opened);
    QCOMPARE(m_state->created(), created);
    QCOMPARE(m_state->vin(), QString());
}

void TestAppStateWorkspace::info_lateAnswerOfAnEarlierFileIsDropped()
{
    m_server->answerNext(holdRequest());
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"SECOND"})"));
    makeFile(inDir(u"first.kvt"_s), "first");
    makeFile(inDir(u"second.kvt"_s), "second");
    m_state->openKvt(inDir(u"first.kvt"_s));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    m_state->openKvt(inDir(u"second.kvt"_s));
    WAIT_COMPARE(m_state->vin(), u"SECOND"_s);
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    m_server->answerHeld(0, answerWith(R"({"status":"ok","vin":"FIRST","fuel":"late"})"));
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_state->vin(), u"SECOND"_s);
    QCOMPARE(m_state->fuel(), QString());
    QCOMPARE(identifiers.count(), 0);
}

void TestAppStateWorkspace::info_lateAnswerOfTheSamePathIsDropped()
{
    m_server->answerNext(holdRequest());
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"AGAIN"})"));
    makeFile(inDir(u"truck.kvt"_s), "first content");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    makeFile(inDir(u"truck.kvt"_s), "second content");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    WAIT_COMPARE(m_state->vin(), u"AGAIN"_s);
    m_server->answerHeld(0, answerWith(R"({"status":"ok","vin":"FIRST"})"));
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_state->vin(), u"AGAIN"_s);
}

void TestAppStateWorkspace::info_nothingIsSentWithoutFile()
{
    m_state->requestKvtInfoFromApi();
    QVERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_state->status(), QString());
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QCOMPARE(m_server->connectionCount(), 1);
}

void TestAppStateWorkspace::info_bytesWithoutFileHaveAName()
{
    m_state->hexModel()->setBytes("bytes");
    m_state->hexWriteBack();
    QCOMPARE(m_state->fileName(), QString());
    m_state->requestKvtInfoFromApi();
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(formField(m_server->request(0), "file"), QByteArray("bytes"));
    QCOMPARE(formParts(m_server->request(0)).last().header("Content-Disposition"),
             QByteArray("form-data; name=\"file\"; filename=\"tune.kvt\""));
}

void TestAppStateWorkspace::info_answerAfterSaveUnderAnotherNameCounts()
{
    m_server->answerNext(holdRequest());
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    m_state->openKvt(inDir(u"truck.kvt"_s));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    m_state->saveKvt(inDir(u"renamed.kvt"_s));
    m_server->answerHeld(0, answerWith(R"({"status":"ok","vin":"V"})"));
    WAIT_COMPARE(m_state->vin(), u"V"_s);
    QCOMPARE(m_state->fileName(), u"renamed.kvt"_s);
}

void TestAppStateWorkspace::info_destroyedWhileRequestIsHeld()
{
    m_server->answerAlways(holdRequest());
    makeFile(inDir(u"truck.kvt"_s), QByteArray(1'000'000, 'x'));
    for (int i = 0; i < 10; ++i) {
        m_state->openKvt(inDir(u"truck.kvt"_s));
    }
    WAIT_COMPARE(m_server->requestCount(), 10);
    m_state.reset();
    AppState other;
    other.findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
    m_server->answerAlways(answerWith(R"({"status":"ok","vin":"V"})"));
    other.openKvt(inDir(u"truck.kvt"_s));
    WAIT_COMPARE(other.vin(), u"V"_s);
}

void TestAppStateWorkspace::applyKvtInfoJson_announcesOnce()
{
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    m_state->applyKvtInfoJson(uR"({"vin":"V","modules":[{"vin":"W","rows":[{"label":"a","value":"1"}]}]})"_s);
    QCOMPARE(identifiers.count(), 1);
    QCOMPARE(m_state->vin(), u"W"_s);
    QCOMPARE(m_state->system(), u"1"_s);
    m_state->applyKvtInfoJson(u"no json"_s);
    QCOMPARE(identifiers.count(), 2);
    QCOMPARE(m_state->vin(), u"W"_s);
}

void TestAppStateWorkspace::moduleOneOs_isTheFirstModules()
{
    m_state->setMainOS(u"typed"_s);
    QCOMPARE(m_state->moduleOneOs(), QString());
    m_state->applyKvtInfoJson(uR"({"modules":[{"mainOs":"1111111"},{"mainOs":"2222222"}]})"_s);
    QCOMPARE(m_state->moduleOneOs(), u"1111111"_s);
    QCOMPARE(m_state->property("moduleOneOS").toString(), u"1111111"_s);
    QCOMPARE(m_state->modules().size(), 2);
    m_state->setMainOS(u"typed again"_s);
    QCOMPARE(m_state->moduleOneOs(), u"1111111"_s);
}

void TestAppStateWorkspace::currentBytes_hexEditsCountAtOnce()
{
    QCOMPARE(m_state->currentKvtBytes(), QByteArray());
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QVERIFY(m_state->hexModel()->applyPatch(0, "B"));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("Bytes"));
    m_state->hexModel()->setBytes({});
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("bytes"));
}

void TestAppStateWorkspace::dialogFolder_isWhereTheOpenFileIs()
{
    const QString folder = u"a b #1 100% \u00e9"_s;
    const QString otherFolder = u"other"_s;
    QVERIFY(QDir(m_dir->path()).mkpath(folder));
    QVERIFY(QDir(m_dir->path()).mkpath(otherFolder));
    makeFile(inDir(folder + u"/truck.kvt"_s), "bytes");
    m_state->openKvt(inDir(folder + u"/truck.kvt"_s));
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(inDir(folder)));
    QCOMPARE(m_state->dialogFolder().toLocalFile(), inDir(folder));

    // A save moves it, a failed open does not; it need not be there any more.
    m_state->saveKvt(inDir(otherFolder + u"/truck.kvt"_s));
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(inDir(otherFolder)));
    m_state->openKvt(inDir(folder + u"/missing.kvt"_s));
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(inDir(otherFolder)));
    QVERIFY(QDir(inDir(otherFolder)).removeRecursively());
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(inDir(otherFolder)));
}

void TestAppStateWorkspace::dialogFolder_withoutFile()
{
    const QString home = TestEnvironment::home();
    const QString documents = TestEnvironment::documents();
    QVERIFY(QDir(documents).removeRecursively());
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(home));
    // A file of that name is not a folder to start in.
    makeFile(documents, "bytes");
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(home));
    QVERIFY(QFile::remove(documents));
    QVERIFY(QDir().mkpath(documents));
    QCOMPARE(m_state->dialogFolder(), QUrl::fromLocalFile(documents));
    QVERIFY(QDir(documents).removeRecursively());
}

void TestAppStateWorkspace::suggestName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no-file") << QString() << u".bin"_s << u"tune.bin"_s;
    QTest::newRow("plain") << u"truck.kvt"_s << u".bin"_s << u"truck.bin"_s;
    QTest::newRow("two-dots") << u"a.b.kvt"_s << u".bin"_s << u"a.b.bin"_s;
    QTest::newRow("no-dot") << u"truck"_s << u"_efi.bin"_s << u"truck_efi.bin"_s;
    QTest::newRow("only-suffix") << u".kvt"_s << u".bin"_s << u"tune.bin"_s;
    QTest::newRow("trailing-dot") << u"truck."_s << u".bin"_s << u"truck.bin"_s;
    QTest::newRow("suffix-empty") << u"truck.kvt"_s << QString() << u"truck"_s;
    QTest::newRow("suffix-unchanged") << u"truck.kvt"_s << u"%1 <b>"_s << u"truck%1 <b>"_s;
}

void TestAppStateWorkspace::suggestName()
{
    QFETCH(QString, name);
    QFETCH(QString, suffix);
    QVERIFY(name.isEmpty() || openFile(name, "bytes"));
    QTEST(m_state->suggestName(suffix), "expected");
}

void TestAppStateWorkspace::save_withoutFileIsRefused()
{
    m_state->saveKvt(inDir(u"never.kvt"_s));
    QCOMPARE(m_state->status(), u"Open an KVT first."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!QFileInfo::exists(inDir(u"never.kvt"_s)));
    QCOMPARE(m_state->fileName(), QString());
}

void TestAppStateWorkspace::save_writesAndRenames()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QSignalSpy file(m_state.get(), &AppState::fileChanged);
    m_state->saveKvt(inDir(u"sub/other.kvt"_s));
    QCOMPARE(m_state->status(), u"Saved."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(file.count(), 1);
    QCOMPARE(m_state->fileName(), u"other.kvt"_s);
    QCOMPARE(contentOf(inDir(u"sub/other.kvt"_s)), QByteArray("bytes"));
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("bytes"));
}

void TestAppStateWorkspace::save_writesHexEditsWithoutWriteBack()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->hexPatch(u"B"_s);
    m_state->saveKvt(inDir(u"truck.kvt"_s));
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("Bytes"));
    // The held bytes are still those of the open.
    m_state->hexModel()->setBytes({});
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("bytes"));
}

void TestAppStateWorkspace::save_keepsIdentifiersAndSendsNothing()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->setVin(u"typed"_s);
    const QString created = m_state->created();
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    m_state->saveKvt(inDir(u"other.kvt"_s));
    QCOMPARE(m_state->vin(), u"typed"_s);
    QCOMPARE(m_state->created(), created);
    QCOMPARE(identifiers.count(), 0);
    QVERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateWorkspace::save_failureKeepsPathAndName()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QVERIFY(QDir(m_dir->path()).mkpath(u"folder.kvt"_s));
    QSignalSpy file(m_state.get(), &AppState::fileChanged);
    for (const QString &path : {inDir(u"folder.kvt"_s), inDir(u"truck.kvt/below.kvt"_s), u"/dev/full"_s}) {
        m_state->saveKvt(path);
        QVERIFY(!m_state->status().isEmpty());
        QVERIFY(m_state->status() != u"Saved."_s);
        QCOMPARE(m_state->statusOK(), 0);
        QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
    }
    QCOMPARE(m_state->status(), u"Short write."_s);
    QCOMPARE(file.count(), 0);
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("bytes"));
    m_state->saveKvt(inDir(u"good.kvt"_s));
    QCOMPARE(m_state->status(), u"Saved."_s);
}

void TestAppStateWorkspace::save_overItself()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->saveKvt(inDir(u"truck.kvt"_s));
    m_state->saveKvt(inDir(u"truck.kvt"_s));
    QCOMPARE(m_state->status(), u"Saved."_s);
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("bytes"));
}

void TestAppStateWorkspace::save_overItselfThroughALink_data()
{
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QString>("saved");

    QTest::newRow("link-to-the-open-file") << u"truck.kvt"_s << u"link.kvt"_s;
    QTest::newRow("opened-through-the-link") << u"link.kvt"_s << u"link.kvt"_s;
    QTest::newRow("target-of-the-open-link") << u"link.kvt"_s << u"truck.kvt"_s;
}

void TestAppStateWorkspace::save_overItselfThroughALink()
{
    QFETCH(QString, opened);
    QFETCH(QString, saved);
    makeFile(inDir(u"truck.kvt"_s), "bytes");
    QVERIFY(QFile::link(inDir(u"truck.kvt"_s), inDir(u"link.kvt"_s)));
    QVERIFY(openFile(opened, "bytes"));
    m_state->hexPatch(u"B"_s);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->saveKvt(inDir(saved));
    QCOMPARE(m_state->status(), u"Saved."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(statuses.count(), 1);
    QCOMPARE(m_state->fileName(), saved);
    QCOMPARE(QFileInfo(inDir(u"link.kvt"_s)).symLinkTarget(), inDir(u"truck.kvt"_s));
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("Bytes"));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("Bytes"));
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList({u"link.kvt"_s, u"truck.kvt"_s}));
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateWorkspace::save_afterTheFolderWasRemoved()
{
    QVERIFY(QDir(m_dir->path()).mkpath(u"trucks/ford"_s));
    const QString path = inDir(u"trucks/ford/truck.kvt"_s);
    makeFile(path, "bytes");
    m_state->openKvt(path);
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    m_state->hexPatch(u"B"_s);
    QVERIFY(QDir(inDir(u"trucks"_s)).removeRecursively());
    m_state->saveKvt(path);
    QCOMPARE(m_state->status(), u"Saved."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
    QCOMPARE(contentOf(path), QByteArray("Bytes"));
    QCOMPARE(m_server->requestCount(), 1);

    // No folder can be made again where a file stands by now.
    QVERIFY(QDir(inDir(u"trucks"_s)).removeRecursively());
    makeFile(inDir(u"trucks"_s), "in the way");
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->saveKvt(path);
    QVERIFY(!m_state->status().isEmpty() && m_state->status() != u"Saved."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(statuses.count(), 1);
    QCOMPARE(contentOf(inDir(u"trucks"_s)), QByteArray("in the way"));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("Bytes"));
    m_state->saveKvt(inDir(u"truck.kvt"_s));
    QCOMPARE(m_state->status(), u"Saved."_s);
}

void TestAppStateWorkspace::hexFind_emptyQuery()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    for (const QString &query : {QString(), u" \t"_s}) {
        m_state->hexFind(query);
        QCOMPARE(m_state->status(), u"Enter hex or ASCII to search."_s);
        QCOMPARE(m_state->statusOK(), 0);
    }
}

void TestAppStateWorkspace::hexFind_stepsAndWraps()
{
    QVERIFY(openFile(u"truck.kvt"_s, "xAxxAxxxxxxxxxxxxxA"));
    const QList<std::pair<int, QString>> steps{
        {1, u"FOUND AT 0X1"_s}, {4, u"FOUND AT 0X4"_s}, {18, u"FOUND AT 0X12"_s}, {1, u"FOUND AT 0X1"_s}};
    for (const auto &[position, status] : steps) {
        m_state->hexFind(u"41"_s);
        QCOMPARE(m_state->hexModel()->cursor(), position);
        QCOMPARE(m_state->status(), status);
        QCOMPARE(m_state->statusOK(), 1);
    }
    // The only match, at the cursor, is found again through the wrap.
    m_state->hexModel()->setCursor(4);
    m_state->hexFind(u"AxxxxxxxxxxxxxA"_s);
    QCOMPARE(m_state->hexModel()->cursor(), 4);
    QCOMPARE(m_state->status(), u"FOUND AT 0X4"_s);
    m_state->hexModel()->setCursor(18);
    m_state->hexFind(u"xA"_s);
    QCOMPARE(m_state->hexModel()->cursor(), 0);
    // So is one that begins before the cursor and ends after it.
    m_state->hexModel()->setCursor(2);
    m_state->hexFind(u"AxxA"_s);
    QCOMPARE(m_state->hexModel()->cursor(), 1);
}

void TestAppStateWorkspace::hexFind_notFoundKeepsCursor()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->hexModel()->setCursor(2);
    m_state->hexFind(u"zzz"_s);
    QCOMPARE(m_state->status(), u"Not found."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->hexModel()->cursor(), 2);
    m_state->hexFind(u"bytes and more"_s);
    QCOMPARE(m_state->status(), u"Not found."_s);
}

void TestAppStateWorkspace::hexFindPrevious_stepsAndWraps()
{
    HexModel *const model = m_state->hexModel();
    model->setBytes("AxxA");
    for (const int position : {3, 0, 3}) {
        m_state->hexFindPrevious(u"A"_s);
        QCOMPARE(model->cursor(), position);
        QCOMPARE(model->matchStart(), position);
        QCOMPARE(m_state->status(), u"FOUND AT 0X%1"_s.arg(position));
        QCOMPARE(m_state->statusOK(), 1);
    }
    m_state->hexFindPrevious(u"zzz"_s);
    QCOMPARE(model->cursor(), 3);
    QCOMPARE(model->matchLength(), 0);
    QCOMPARE(m_state->status(), u"Not found."_s);
    m_state->hexFindPrevious(u" "_s);
    QCOMPARE(m_state->status(), u"Enter hex or ASCII to search."_s);
}

void TestAppStateWorkspace::hexGoTo_data()
{
    QTest::addColumn<QString>("offset");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QString>("status");

    const QString outside = u"Outside the file: its last byte is at 0x3FF."_s;
    QTest::newRow("offset") << u"2a"_s << 0x2A << u"At 0x2A."_s;
    QTest::newRow("relative") << u"+10"_s << 0x20 << u"At 0x20."_s;
    QTest::newRow("back") << u"-16d"_s << 0 << u"At 0x0."_s;
    QTest::newRow("end") << u"end"_s << 0x3FF << u"At 0x3FF."_s;
    QTest::newRow("last") << u"3FF"_s << 0x3FF << u"At 0x3FF."_s;
    QTest::newRow("past-the-end") << u"400"_s << 0x10 << outside;
    QTest::newRow("far-past-the-end") << u"9999999999d"_s << 0x10 << outside;
    QTest::newRow("before-the-start") << u"-11"_s << 0x10 << outside;
    QTest::newRow("no-offset") << u"here"_s << 0x10
                               << u"Enter an offset such as 1F3A7, 127911d, +40, end or 1F3A7:20."_s;
    QTest::newRow("selects") << u"20:10"_s << 0x20 << u"Selected 0x20\u20130x2F, 16 bytes."_s;
    QTest::newRow("selects-one") << u"+0:1"_s << 0x10 << u"Selected 0x10\u20130x10, 1 byte."_s;
    QTest::newRow("selects-to-the-end") << u"3F0:10"_s << 0x3F0 << u"Selected 0x3F0\u20130x3FF, 16 bytes."_s;
    QTest::newRow("selects-past-the-end") << u"3F0:11"_s << 0x10 << outside;
}

void TestAppStateWorkspace::hexGoTo()
{
    QFETCH(QString, offset);
    QFETCH(QString, status);
    m_state->hexModel()->setBytes(QByteArray(0x400, 'x'));
    m_state->hexModel()->setCursor(0x10);
    const bool gone = m_state->hexGoTo(offset);
    QTEST(m_state->hexModel()->cursor(), "cursor");
    QCOMPARE(m_state->status(), status);
    QCOMPARE(m_state->statusOK(), gone ? 1 : 0);
    QCOMPARE(gone, status.startsWith(u"At "_s) || status.startsWith(u"Selected "_s));
    QCOMPARE(m_state->hexModel()->selectionLength() > 0, status.startsWith(u"Selected "_s));
    QCOMPARE(m_state->hexEditing()->targets(), gone ? QStringList(offset) : QStringList());

    m_state->hexModel()->setBytes({});
    QVERIFY(!m_state->hexGoTo(offset));
    QCOMPARE(m_state->status(), u"No file is open."_s);
}

void TestAppStateWorkspace::hexFind_upperCasesTheWholeMessage()
{
    QByteArray bytes(0x2000, '.');
    bytes.replace(0x1a2b, 4, "\xde\xad\xbe\xef");
    QVERIFY(openFile(u"truck.kvt"_s, bytes));
    m_state->hexFind(u" de:ad be,ef "_s);
    QCOMPARE(m_state->status(), u"FOUND AT 0X1A2B"_s);
    QCOMPARE(m_state->hexModel()->cursor(), 0x1a2b);
    QCOMPARE(m_state->hexModel()->currentRow(), 0x1a2);
}

void TestAppStateWorkspace::hexFind_withoutFile()
{
    m_state->hexFind(u"00"_s);
    QCOMPARE(m_state->status(), u"Not found."_s);
    QCOMPARE(m_state->hexModel()->cursor(), 0);
}

void TestAppStateWorkspace::hexFind_keepsTheMatch_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");

    QTest::newRow("text") << u"more"_s << 10 << 4;
    QTest::newRow("hex") << u"6D 6F"_s << 10 << 2;
    QTest::newRow("at-the-start") << u"bytes"_s << 0 << 5;
    QTest::newRow("whole-file") << u"bytes and more"_s << 0 << 14;
    QTest::newRow("not-found") << u"zzz"_s << -1 << 0;
    QTest::newRow("empty") << QString() << -1 << 0;
}

void TestAppStateWorkspace::hexFind_keepsTheMatch()
{
    QFETCH(QString, query);
    QVERIFY(openFile(u"truck.kvt"_s, "bytes and more"));
    m_state->hexFind(u"and"_s);
    QCOMPARE(m_state->hexModel()->matchStart(), 6);
    QCOMPARE(m_state->hexModel()->matchLength(), 3);
    m_state->hexFind(query);
    QTEST(m_state->hexModel()->matchStart(), "start");
    QTEST(m_state->hexModel()->matchLength(), "length");
}

void TestAppStateWorkspace::hexFind_announcesNothingTwice()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes and more"));
    QSignalSpy cursor(m_state->hexModel(), &HexModel::cursorChanged);
    QSignalSpy data(m_state->hexModel(), &HexModel::dataChangedSig);
    QSignalSpy matches(m_state->hexModel(), &HexModel::matchChanged);
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    m_state->hexFind(u"and"_s);
    m_state->hexFind(u"and"_s);
    QCOMPARE(cursor.count(), 1);
    QCOMPARE(matches.count(), 1);
    QCOMPARE(status.count(), 2);
    m_state->hexFind(u"zzz"_s);
    m_state->hexFind(u"zzz"_s);
    QCOMPARE(matches.count(), 2);
    QCOMPARE(cursor.count(), 1);
    QCOMPARE(data.count(), 0);
}

void TestAppStateWorkspace::hexPatch_data()
{
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("status");

    const QString refused = u"Patch past EOF or empty."_s;
    QTest::newRow("hex") << 1 << u"FF 00"_s << QByteArray("b\xff\0es", 5) << u"Patched 2 byte(s)."_s;
    QTest::newRow("one-byte") << 0 << u"58"_s << QByteArray("Xytes") << u"Patched 1 byte(s)."_s;
    QTest::newRow("text") << 0 << u"xyz"_s << QByteArray("xyzes") << u"Patched 3 byte(s)."_s;
    QTest::newRow("ends-at-last-byte")
        << 3 << u"AA BB"_s << QByteArray("byt\xaa\xbb") << u"Patched 2 byte(s)."_s;
    QTest::newRow("one-past-end") << 4 << u"AA BB"_s << QByteArray("bytes") << refused;
    QTest::newRow("longer-than-file") << 0 << u"longer than it"_s << QByteArray("bytes") << refused;
    QTest::newRow("empty") << 0 << QString() << QByteArray("bytes") << refused;
    QTest::newRow("blank") << 0 << u"   "_s << QByteArray("bytes") << refused;
}

void TestAppStateWorkspace::hexPatch()
{
    QFETCH(int, cursor);
    QFETCH(QString, query);
    QFETCH(QString, status);
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->hexModel()->setCursor(cursor);
    m_state->hexPatch(query);
    QTEST(m_state->hexModel()->bytes(), "after");
    QCOMPARE(m_state->status(), status);
    QCOMPARE(m_state->statusOK(), status.startsWith(u"Patched"_s) ? 1 : 0);
    QCOMPARE(m_state->hexModel()->cursor(), cursor);
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("bytes"));
}

void TestAppStateWorkspace::hexPatch_withoutFile()
{
    m_state->hexPatch(u"00"_s);
    QCOMPARE(m_state->status(), u"Patch past EOF or empty."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->hexModel()->byteCount(), 0);
}

void TestAppStateWorkspace::hexWriteBack_replacesHeldBytesOnly()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    m_state->setShowHex(true);
    m_state->hexPatch(u"B"_s);
    QSignalSpy file(m_state.get(), &AppState::fileChanged);
    QSignalSpy shown(m_state.get(), &AppState::showHexChanged);
    m_state->hexWriteBack();
    QCOMPARE(m_state->status(), u"Hex written back into the open file buffer."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QVERIFY(!m_state->showHex());
    QCOMPARE(shown.count(), 1);
    QCOMPARE(file.count(), 0);
    QCOMPARE(contentOf(inDir(u"truck.kvt"_s)), QByteArray("bytes"));
    m_state->requestKvtInfoFromApi();
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    QCOMPARE(formField(m_server->request(1), "file"), QByteArray("Bytes"));
}

void TestAppStateWorkspace::hexWriteBack_closedEditorStaysClosed()
{
    QVERIFY(openFile(u"truck.kvt"_s, "bytes"));
    QSignalSpy shown(m_state.get(), &AppState::showHexChanged);
    m_state->hexPatch(u"B"_s);
    // Without a write-back the information request carries the bytes as opened.
    m_state->requestKvtInfoFromApi();
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    QCOMPARE(formField(m_server->request(1), "file"), QByteArray("bytes"));
    m_state->hexWriteBack();
    QCOMPARE(shown.count(), 0);
}

KVTEDITOR_TEST_MAIN(TestAppStateWorkspace)
#include "tst_AppStateWorkspace.moc"
