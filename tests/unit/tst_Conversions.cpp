#include "app/AppState.h"
#include "platform/LocalWorker.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

const QString noInput = u"Open an KVT on MAIN or pick a file first."_s;

QString inDocuments(const QString &name)
{
    return TestEnvironment::documents() + u'/' + name;
}

/// Each part as its disposition and its body, "name=...: body".
QByteArrayList partsOf(const RecordedRequest &request)
{
    QByteArrayList parts;
    for (const FormPart &part : formParts(request)) {
        parts.append(part.header("Content-Disposition").mid(11) + ": " + part.body);
    }
    return parts;
}

QByteArray fieldPart(const QByteArray &name, const QByteArray &value)
{
    return "name=\"" + name + "\": " + value;
}

QByteArray filePart(const QByteArray &name, const QByteArray &fileName, const QByteArray &bytes)
{
    return "name=\"" + name + "\"; filename=\"" + fileName + "\": " + bytes;
}

} // namespace

class TestConversions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void convertsChosenFile_data();
    void convertsChosenFile();
    void convertsWorkspaceFile_data();
    void convertsWorkspaceFile();
    void chosenFileIsNamedAfterTheWorkspace_data();
    void chosenFileIsNamedAfterTheWorkspace();
    void outputNameOfChosenFile_data();
    void outputNameOfChosenFile();
    void editsOfTheHexEditorAreConverted();
    void withoutInput_data();
    void withoutInput();
    void unreadableFile_data();
    void unreadableFile();
    void unknownKey_data();
    void unknownKey();
    void thirdPathIsNotUsed();
    void shortCalls();

    void baseFileGoesWithImportsOnly();
    void baseFileIsReplaced();
    void emptyBaseFileIsNone();
    void pickBaseKvt_unreadable();
    void pickBaseKvt_namesTheFile_data();
    void pickBaseKvt_namesTheFile();

    void headerAndExport();
    void exportThatCannotBeRead();

    void containers_data();
    void containers();
    void containerOptionsFollowTheController_data();
    void containerOptionsFollowTheController();
    void unknownKind_data();
    void unknownKind();
    void containerThatCannotBeRead_data();
    void containerThatCannotBeRead();
    void containerIgnoresTheWorkspace();

    void tuneFileIsOpened();
    void otherFileIsNotOpened();
    void secondConversionAfterFailure();

    void localWorker_doesNothing();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    VoxApiClient *client() const { return m_state->findChild<VoxApiClient *>(); }
    bool nothingIsSent() const
    {
        return client()->children().isEmpty() && m_server->requestCount() == m_requestsBefore;
    }
    void openWorkspace(const QString &name, const QByteArray &bytes);
    void waitForRequest();

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<AppState> m_state;
    int m_requestsBefore = 0;
};

void TestConversions::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<RawHttpServer>();
    m_desktop = std::make_unique<UrlRecorder>();
    m_state = std::make_unique<AppState>();
    client()->setApiBase(m_server->baseUrl());
    m_requestsBefore = 0;
}

void TestConversions::cleanup()
{
    m_state.reset();
    m_server.reset();
    m_desktop.reset();
    m_dir.reset();
    QDir(TestEnvironment::documents()).removeRecursively();
}

void TestConversions::openWorkspace(const QString &name, const QByteArray &bytes)
{
    makeFile(inDir(name), bytes);
    m_server->answerNext(answerWith(R"({"status":"ok"})"));
    m_state->openKvt(inDir(name));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    WAIT_VERIFY(client()->children().isEmpty());
    m_requestsBefore = 1;
}

void TestConversions::waitForRequest()
{
    QVERIFY(m_state->busy());
    WAIT_VERIFY(!m_state->busy());
    WAIT_VERIFY(client()->children().isEmpty());
}

void TestConversions::convertsChosenFile_data()
{
    QTest::addColumn<QString>("op");
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QString>("outName");

    QTest::newRow("kvt2bin") << u"kvt2bin"_s << QByteArray("convert_kvt2bin") << u"tune.bin"_s;
    QTest::newRow("cm2450_kvt2bin") << u"cm2450_kvt2bin"_s << QByteArray("convert_cm2450_kvt2bin")
                                    << u"tune_cm2450.zip"_s;
    QTest::newRow("ctz2bin") << u"ctz2bin"_s << QByteArray("convert_ctz2bin") << u"In.put.bin"_s;
    QTest::newRow("ctz2kvt") << u"ctz2kvt"_s << QByteArray("convert_ctz2kvt") << u"from_ctz.kvt"_s;
    QTest::newRow("kvt2efi") << u"kvt2efi"_s << QByteArray("convert_kvt2efi_live_bin") << u"tune_efi.bin"_s;
    QTest::newRow("bin2kvt") << u"bin2kvt"_s << QByteArray("convert_bin2kvt_import") << u"imported.kvt"_s;
}

void TestConversions::convertsChosenFile()
{
    QFETCH(QString, op);
    QFETCH(QByteArray, operation);
    QFETCH(QString, outName);
    makeFile(inDir(u"In.put.ctz"_s), QByteArray("chosen\0\xff", 8));
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(op, inDir(u"In.put.ctz"_s));
    waitForRequest();
    QCOMPARE(m_server->request(0).requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    QCOMPARE(partsOf(m_server->request(0)),
             QByteArrayList({fieldPart("operation", operation), fieldPart("version", "4.0.2"),
                             filePart("file", "In.put.ctz", QByteArray("chosen\0\xff", 8))}));
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(QDir(TestEnvironment::documents()).entryList(QDir::Files), QStringList{outName});
    QCOMPARE(contentOf(inDocuments(outName)), QByteArray("produced"));
    QCOMPARE(contentOf(inDir(u"In.put.ctz"_s)), QByteArray("chosen\0\xff", 8));
}

void TestConversions::convertsWorkspaceFile_data()
{
    QTest::addColumn<QString>("op");
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QString>("outName");

    QTest::newRow("kvt2bin") << u"kvt2bin"_s << QByteArray("convert_kvt2bin") << u"My.truck.bin"_s;
    QTest::newRow("cm2450_kvt2bin") << u"cm2450_kvt2bin"_s << QByteArray("convert_cm2450_kvt2bin")
                                    << u"My.truck_cm2450.zip"_s;
    QTest::newRow("ctz2bin") << u"ctz2bin"_s << QByteArray("convert_ctz2bin") << u"My.truck.bin"_s;
    QTest::newRow("ctz2kvt") << u"ctz2kvt"_s << QByteArray("convert_ctz2kvt") << u"from_ctz.kvt"_s;
    QTest::newRow("kvt2efi") << u"kvt2efi"_s << QByteArray("convert_kvt2efi_live_bin")
                             << u"My.truck_efi.bin"_s;
    QTest::newRow("bin2kvt") << u"bin2kvt"_s << QByteArray("convert_bin2kvt_import") << u"imported.kvt"_s;
}

void TestConversions::convertsWorkspaceFile()
{
    QFETCH(QString, op);
    QFETCH(QByteArray, operation);
    QFETCH(QString, outName);
    openWorkspace(u"My.truck.kvt"_s, "workspace");
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(op, u""_s);
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(1)),
             QByteArrayList({fieldPart("operation", operation), fieldPart("version", "4.0.2"),
                             filePart("file", "My.truck.kvt", "workspace")}));
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(contentOf(inDocuments(outName)), QByteArray("produced"));
    QCOMPARE(contentOf(inDir(u"My.truck.kvt"_s)), QByteArray("workspace"));
}

void TestConversions::chosenFileIsNamedAfterTheWorkspace_data()
{
    QTest::addColumn<QString>("op");
    QTest::addColumn<QString>("outName");

    QTest::newRow("kvt2bin") << u"kvt2bin"_s << u"truck.bin"_s;
    QTest::newRow("cm2450_kvt2bin") << u"cm2450_kvt2bin"_s << u"truck_cm2450.zip"_s;
    QTest::newRow("kvt2efi") << u"kvt2efi"_s << u"truck_efi.bin"_s;
    QTest::newRow("ctz2bin-after-its-input") << u"ctz2bin"_s << u"other.bin"_s;
}

void TestConversions::chosenFileIsNamedAfterTheWorkspace()
{
    QFETCH(QString, op);
    QFETCH(QString, outName);
    openWorkspace(u"truck.kvt"_s, "workspace");
    makeFile(inDir(u"other.ctz"_s), "chosen");
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(op, inDir(u"other.ctz"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(1)).last(), filePart("file", "other.ctz", "chosen"));
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
}

void TestConversions::outputNameOfChosenFile_data()
{
    QTest::addColumn<QString>("inputName");
    QTest::addColumn<QString>("outName");

    QTest::newRow("one-suffix") << u"tune.ctz"_s << u"tune.bin"_s;
    QTest::newRow("two-suffixes") << u"tune.old.ctz"_s << u"tune.old.bin"_s;
    QTest::newRow("no-suffix") << u"tune"_s << u"tune.bin"_s;
    QTest::newRow("blanks") << u" my tune .ctz"_s << u" my tune .bin"_s;
    QTest::newRow("letters") << u"größe.ctz"_s << u"größe.bin"_s;
    QTest::newRow("place-markers") << u"%1 %2.ctz"_s << u"%1 %2.bin"_s;
    QTest::newRow("markup") << u"<b>&amp;.ctz"_s << u"<b>&amp;.bin"_s;
    QTest::newRow("hash") << u"a#b?c.ctz"_s << u"a#b?c.bin"_s;
}

void TestConversions::outputNameOfChosenFile()
{
    QFETCH(QString, inputName);
    QFETCH(QString, outName);
    makeFile(inDir(inputName), "chosen");
    m_server->answerAlways(answerWith("produced"));
    m_state->convertOp(u"ctz2bin"_s, inDir(inputName));
    waitForRequest();
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QVERIFY(QFile::remove(inDocuments(outName)));
    m_state->toolConvert(u"xcal"_s, inDir(inputName));
    waitForRequest();
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(contentOf(inDocuments(outName)), QByteArray("produced"));
}

void TestConversions::editsOfTheHexEditorAreConverted()
{
    openWorkspace(u"truck.kvt"_s, "workspace");
    QVERIFY(m_state->hexModel()->applyPatch(0, "W"));
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(u"kvt2bin"_s, QString());
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(1)).last(), filePart("file", "truck.kvt", "Workspace"));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("Workspace"));
}

void TestConversions::withoutInput_data()
{
    QTest::addColumn<QString>("op");

    for (const char *op :
         {"kvt2bin", "cm2450_kvt2bin", "ctz2bin", "ctz2kvt", "kvt2efi", "bin2kvt", "cm2450_import"}) {
        QTest::newRow(op) << QString::fromLatin1(op);
    }
}

void TestConversions::withoutInput()
{
    QFETCH(QString, op);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->convertOp(op, QString());
    QCOMPARE(m_state->status(), noInput);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(statuses.count(), 1);
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::unreadableFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasError");

    QTest::newRow("missing") << u"missing.ctz"_s << true;
    QTest::newRow("folder") << u"folder.ctz"_s << true;
    QTest::newRow("pipe") << u"pipe.ctz"_s << true;
    // Nothing went wrong in the reading of an empty file, so there is no text to show.
    QTest::newRow("empty") << u"empty.ctz"_s << false;
}

void TestConversions::unreadableFile()
{
    QFETCH(QString, name);
    QFETCH(bool, hasError);
    openWorkspace(u"truck.kvt"_s, "workspace");
    QVERIFY(QDir().mkdir(inDir(u"folder.ctz"_s)));
    makeFile(inDir(u"empty.ctz"_s), {});
    QCOMPARE(::mkfifo(QFile::encodeName(inDir(u"pipe.ctz"_s)).constData(), 0600), 0);
    m_state->setStatus(u"before"_s, 1);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->convertOp(u"ctz2bin"_s, inDir(name));
    QCOMPARE(statuses.count(), 1);
    QCOMPARE(m_state->status().isEmpty(), !hasError);
    QVERIFY(m_state->status() != u"before"_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->busy());
    QVERIFY(nothingIsSent());
    QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
}

void TestConversions::unknownKey_data()
{
    QTest::addColumn<QString>("op");

    QTest::newRow("empty") << QString();
    QTest::newRow("other") << u"hex"_s;
    QTest::newRow("upper-case") << u"KVT2BIN"_s;
    QTest::newRow("blank-after") << u"kvt2bin "_s;
    QTest::newRow("operation") << u"convert_kvt2bin"_s;
    QTest::newRow("kind-of-a-container") << u"xcal"_s;
}

void TestConversions::unknownKey()
{
    QFETCH(QString, op);
    openWorkspace(u"truck.kvt"_s, "workspace");
    makeFile(inDir(u"in.ctz"_s), "chosen");
    m_state->setStatus(u"before"_s, 1);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->convertOp(op, QString());
    m_state->convertOp(op, inDir(u"in.ctz"_s));
    QCOMPARE(statuses.count(), 0);
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::thirdPathIsNotUsed()
{
    makeFile(inDir(u"a.bin"_s), "A");
    makeFile(inDir(u"b.bin"_s), "B");
    makeFile(inDir(u"c.bin"_s), "C");
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    m_state->convertOp(u"bin2kvt"_s, inDir(u"a.bin"_s), inDir(u"b.bin"_s), inDir(u"c.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)).mid(2), QByteArrayList{filePart("file", "a.bin", "A")});
    m_state->convertOp(u"ctz2bin"_s, inDir(u"a.bin"_s), {}, inDir(u"missing.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(1)).mid(2), QByteArrayList{filePart("file", "a.bin", "A")});
    QCOMPARE(m_state->statusOK(), 1);
}

void TestConversions::shortCalls()
{
    makeFile(inDir(u"a.bin"_s), "A");
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    const QString path = inDir(u"a.bin"_s);
    QVERIFY(QMetaObject::invokeMethod(m_state.get(), "convertOp", Q_ARG(QString, u"ctz2bin"_s),
                                      Q_ARG(QString, path)));
    waitForRequest();
    QVERIFY(QMetaObject::invokeMethod(m_state.get(), "toolConvert", Q_ARG(QString, u"ecfg"_s),
                                      Q_ARG(QString, path)));
    waitForRequest();
    QCOMPARE(m_server->requestCount(), 2);
}

void TestConversions::baseFileGoesWithImportsOnly()
{
    makeFile(inDir(u"in.bin"_s), "input");
    makeFile(inDir(u"base.kvt"_s), "base");
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    m_state->convertOp(u"bin2kvt"_s, inDir(u"in.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)).size(), 3);
    m_state->pickBaseKvt(inDir(u"base.kvt"_s));
    m_state->convertOp(u"bin2kvt"_s, inDir(u"in.bin"_s));
    waitForRequest();
    const QList<FormPart> parts = formParts(m_server->request(1));
    QCOMPARE(parts.size(), 4);
    QCOMPARE(partsOf(m_server->request(1)).mid(0, 3),
             QByteArrayList({fieldPart("operation", "convert_bin2kvt_import"), fieldPart("version", "4.0.2"),
                             filePart("file", "in.bin", "input")}));
    QCOMPARE(parts.last().header("Content-Disposition"),
             QByteArray("form-data; name=\"import\"; filename=\"import.bin\""));
    QVERIFY(!parts.last().body.isEmpty());
    const QStringList others{u"kvt2bin"_s, u"cm2450_kvt2bin"_s, u"ctz2bin"_s, u"ctz2kvt"_s, u"kvt2efi"_s};
    for (const QString &op : others) {
        m_state->convertOp(op, inDir(u"in.bin"_s));
        waitForRequest();
        QCOMPARE(partsOf(m_server->request(m_server->requestCount() - 1)).size(), 3);
    }
}

void TestConversions::baseFileIsReplaced()
{
    makeFile(inDir(u"in.bin"_s), "input");
    makeFile(inDir(u"one.kvt"_s), "one");
    makeFile(inDir(u"two.kvt"_s), "two");
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    m_state->pickBaseKvt(inDir(u"one.kvt"_s));
    m_state->pickBaseKvt(inDir(u"two.kvt"_s));
    QVERIFY(QFile::remove(inDir(u"two.kvt"_s)));
    m_state->convertOp(u"bin2kvt"_s, inDir(u"in.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)).mid(2),
             QByteArrayList({filePart("file", "in.bin", "input"), filePart("import", "import.bin", "two")}));
}

void TestConversions::emptyBaseFileIsNone()
{
    makeFile(inDir(u"in.bin"_s), "input");
    makeFile(inDir(u"base.kvt"_s), "base");
    makeFile(inDir(u"empty.kvt"_s), {});
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    m_state->pickBaseKvt(inDir(u"base.kvt"_s));
    m_state->pickBaseKvt(inDir(u"empty.kvt"_s));
    m_state->convertOp(u"bin2kvt"_s, inDir(u"in.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)).mid(2), QByteArrayList{filePart("file", "in.bin", "input")});
}

void TestConversions::pickBaseKvt_unreadable()
{
    makeFile(inDir(u"empty.kvt"_s), {});
    m_state->setStatus(u"before"_s, 1);
    m_state->pickBaseKvt(inDir(u"missing.kvt"_s));
    QVERIFY(!m_state->status().isEmpty());
    QVERIFY(m_state->status() != u"before"_s);
    QCOMPARE(m_state->statusOK(), 0);
    m_state->pickBaseKvt(inDir(u"empty.kvt"_s));
    QCOMPARE(m_state->status(), QString());
    QCOMPARE(m_state->statusOK(), 0);
    m_state->pickBaseKvt(m_dir->path());
    QVERIFY(!m_state->status().isEmpty());
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::pickBaseKvt_namesTheFile_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("plain") << u"base.kvt"_s;
    QTest::newRow("blanks") << u" my base.kvt"_s;
    QTest::newRow("place-marker") << u"%1 and %2.kvt"_s;
    QTest::newRow("markup") << u"<b>R&D.kvt"_s;
}

void TestConversions::pickBaseKvt_namesTheFile()
{
    QFETCH(QString, name);
    makeFile(inDir(name), "base");
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->pickBaseKvt(inDir(name));
    QCOMPARE(m_state->status(), u"Base KVT set: "_s + name);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(statuses.count(), 1);
    QVERIFY(nothingIsSent());
}

void TestConversions::headerAndExport()
{
    makeFile(inDir(u"head.bin"_s), "HEAD");
    makeFile(inDir(u"exp.bin"_s), "EXPORT");
    m_server->answerNext(answerWith("produced"));
    m_server->answerNext(answerWith(R"({"status":"ok"})"));
    m_state->convertOp(u"cm2450_import"_s, inDir(u"head.bin"_s), inDir(u"exp.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)),
             QByteArrayList({fieldPart("operation", "convert_cm2450_bin2kvt"), fieldPart("version", "4.0.2"),
                             filePart("file", "head.bin", "HEAD"), filePart("header", "header.bin", "HEAD"),
                             filePart("export", "export.bin", "EXPORT")}));
    QCOMPARE(m_state->fileName(), u"cm2450_imported.kvt"_s);
    QCOMPARE(contentOf(inDocuments(u"cm2450_imported.kvt"_s)), QByteArray("produced"));
}

void TestConversions::exportThatCannotBeRead()
{
    makeFile(inDir(u"head.bin"_s), "HEAD");
    m_server->answerAlways(answerWith(R"({"status":"fail","message":"No export."})"));
    m_state->convertOp(u"cm2450_import"_s, inDir(u"head.bin"_s), inDir(u"missing.bin"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)).mid(2),
             QByteArrayList({filePart("file", "head.bin", "HEAD"), filePart("header", "header.bin", "HEAD"),
                             filePart("export", "export.bin", "")}));
    QCOMPARE(m_state->status(), u"No export."_s);
}

void TestConversions::containers_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("outName");

    QTest::newRow("xcal") << u"xcal"_s << QByteArray("convert_xcal2bin") << fieldPart("xcal_mode", "kvt")
                          << u"my.cal.bin"_s;
    QTest::newRow("phf") << u"phf"_s << QByteArray("convert_xcal2bin") << fieldPart("xcal_mode", "flat")
                         << u"my.cal.bin"_s;
    QTest::newRow("vbf") << u"vbf"_s << QByteArray("convert_vbf2bin") << fieldPart("vbf_skip_verify", "0")
                         << u"my.cal.bin"_s;
    QTest::newRow("ecfg") << u"ecfg"_s << QByteArray("convert_ecfg2xdf") << QByteArray() << u"ecfg.xdf"_s;
}

void TestConversions::containers()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, operation);
    QFETCH(QByteArray, field);
    QFETCH(QString, outName);
    makeFile(inDir(u"my.cal.hex"_s), "calibration");
    makeFile(inDir(u"second.hex"_s), "second");
    m_server->answerAlways(answerWith("produced"));
    QByteArrayList expected{fieldPart("operation", operation), fieldPart("version", "4.0.2"), field,
                            filePart("file", "my.cal.hex", "calibration")};
    expected.removeAll(QByteArray());
    // Fields go by their names, and "vbf" comes before "version".
    if (field.startsWith("name=\"vbf"))
        expected.move(2, 1);
    m_state->toolConvert(kind, inDir(u"my.cal.hex"_s), inDir(u"second.hex"_s));
    waitForRequest();
    QCOMPARE(partsOf(m_server->request(0)), expected);
    QCOMPARE(m_state->status(), u"Saved "_s + outName);
    QCOMPARE(contentOf(inDocuments(outName)), QByteArray("produced"));
    QCOMPARE(m_state->fileName(), QString());
}

void TestConversions::containerOptionsFollowTheController_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("skip");
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("value");

    for (const char *mode : {"kvt", "efi", "bench", "flat", "allseg", "", "<odd> mode"}) {
        QTest::addRow("xcal-%s", mode)
            << u"xcal"_s << QString::fromLatin1(mode) << true << QByteArray("xcal_mode") << QByteArray(mode);
        QTest::addRow("phf-%s", mode)
            << u"phf"_s << QString::fromLatin1(mode) << true << QByteArray("xcal_mode") << QByteArray("flat");
    }
    QTest::newRow("vbf-skip") << u"vbf"_s << u"bench"_s << true << QByteArray("vbf_skip_verify")
                              << QByteArray("1");
    QTest::newRow("vbf-verify") << u"vbf"_s << u"bench"_s << false << QByteArray("vbf_skip_verify")
                                << QByteArray("0");
}

void TestConversions::containerOptionsFollowTheController()
{
    QFETCH(QString, kind);
    QFETCH(QString, mode);
    QFETCH(bool, skip);
    QFETCH(QByteArray, field);
    makeFile(inDir(u"cal.vbf"_s), "calibration");
    m_server->answerAlways(answerWith("{\"status\":\"ok\"}"));
    m_state->setXcalMode(mode);
    m_state->setVbfSkipVerify(skip);
    m_state->toolConvert(kind, inDir(u"cal.vbf"_s));
    waitForRequest();
    QCOMPARE(formParts(m_server->request(0)).size(), 4);
    QTEST(formField(m_server->request(0), field), "value");
}

void TestConversions::unknownKind_data()
{
    QTest::addColumn<QString>("kind");

    QTest::newRow("empty") << QString();
    QTest::newRow("hex") << u"hex"_s;
    QTest::newRow("upper-case") << u"XCAL"_s;
    QTest::newRow("key-of-a-tune-file") << u"kvt2bin"_s;
}

void TestConversions::unknownKind()
{
    QFETCH(QString, kind);
    makeFile(inDir(u"cal.hex"_s), "calibration");
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->toolConvert(kind, inDir(u"cal.hex"_s));
    m_state->toolConvert(kind, QString());
    QCOMPARE(statuses.count(), 0);
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::containerThatCannotBeRead_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << u"missing.hex"_s;
    QTest::newRow("empty") << u"empty.hex"_s;
    QTest::newRow("folder") << u"folder.hex"_s;
}

void TestConversions::containerThatCannotBeRead()
{
    QFETCH(QString, name);
    makeFile(inDir(u"empty.hex"_s), {});
    QVERIFY(QDir().mkdir(inDir(u"folder.hex"_s)));
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    for (const QString &kind : {u"xcal"_s, u"phf"_s, u"vbf"_s, u"ecfg"_s}) {
        m_state->setStatus({}, 1);
        m_state->toolConvert(kind, inDir(name));
        QCOMPARE(m_state->status(), u"No input file."_s);
        QCOMPARE(m_state->statusOK(), 0);
    }
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::containerIgnoresTheWorkspace()
{
    openWorkspace(u"truck.kvt"_s, "workspace");
    m_state->toolConvert(u"xcal"_s, QString());
    QCOMPARE(m_state->status(), u"No input file."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(nothingIsSent());
}

void TestConversions::tuneFileIsOpened()
{
    makeFile(inDir(u"in.ctz"_s), "chosen");
    m_server->answerNext(answerWith("produced"));
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"V"})"));
    m_state->convertOp(u"ctz2kvt"_s, inDir(u"in.ctz"_s));
    WAIT_COMPARE(m_state->vin(), u"V"_s);
    QCOMPARE(m_state->fileName(), u"from_ctz.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("produced"));
    QCOMPARE(formField(m_server->request(1), "operation"), QByteArray("kvt_info"));
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(TestEnvironment::documents())});
}

void TestConversions::otherFileIsNotOpened()
{
    openWorkspace(u"truck.kvt"_s, "workspace");
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(u"kvt2efi"_s, QString());
    waitForRequest();
    QCOMPARE(m_state->status(), u"Saved truck_efi.bin"_s);
    QCOMPARE(m_state->fileName(), u"truck.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("workspace"));
    QCOMPARE(m_server->requestCount(), 2);
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(TestEnvironment::documents())});
}

void TestConversions::secondConversionAfterFailure()
{
    openWorkspace(u"truck.kvt"_s, "workspace");
    m_server->answerNext(answerWith(R"({"status":"fail","message":"Not a KVT."})"));
    m_server->answerNext(answerWith("produced"));
    m_state->convertOp(u"kvt2bin"_s, QString());
    waitForRequest();
    QCOMPARE(m_state->status(), u"Not a KVT."_s);
    QCOMPARE(m_state->statusOK(), 0);
    m_state->convertOp(u"kvt2bin"_s, QString());
    waitForRequest();
    QCOMPARE(m_state->status(), u"Saved truck.bin"_s);
    QCOMPARE(m_state->statusOK(), 1);
}

void TestConversions::localWorker_doesNothing()
{
    QVERIFY(!LocalWorker::available());
    QCOMPARE(LocalWorker::cliPath(), QString());
    const LocalRunResult results[] = {
        LocalWorker::run({}, 0),
        LocalWorker::run({u"/bin/false"_s, u"x"_s}, -1),
        LocalWorker::convert({}),
        LocalWorker::convert({u"touch"_s, inDir(u"made"_s)}),
    };
    for (const LocalRunResult &result : results) {
        QVERIFY(!result.ok);
        QCOMPARE(result.exitCode, -1);
        QCOMPARE(result.output, QString());
        QCOMPARE(result.errorOutput, QString());
        QCOMPARE(result.message, u"This build performs all work through the VOX API."_s);
    }
    QVERIFY(!QFileInfo::exists(inDir(u"made"_s)));
}

KVTEDITOR_TEST_MAIN(TestConversions)
#include "tst_Conversions.moc"
