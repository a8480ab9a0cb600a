#include "app/AppState.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString needsBoth = u"Pick a base KVT and a donor KVT."_s;

/// Each part as its disposition and its body, "name=...: body".
QByteArrayList partsOf(const RecordedRequest &request)
{
    QByteArrayList parts;
    for (const FormPart &part : formParts(request))
        parts.append(part.header("Content-Disposition").mid(11) + ": " + part.body);
    return parts;
}

QByteArray previewOf(int count)
{
    QByteArrayList candidates;
    for (int i = 0; i < count; ++i)
        candidates.append("{\"label\":\"L" + QByteArray::number(i) + "\"}");
    return "{\"status\":\"ok\",\"vin\":\"PREVIEWVIN\",\"candidates\":[" + candidates.join(',') + "]}";
}

} // namespace

class TestAppStateSegments : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pick_data();
    void pick();
    void pickedTextIsTakenAsItIs();
    void baseAndDonorAreNeeded_data();
    void baseAndDonorAreNeeded();
    void base_data();
    void base();
    void baseIsReadFromDiskNotFromTheEditor();
    void pickedFilesOutliveAnOpen();

    void previewForm();
    void previewOfUnreadableBase_data();
    void previewOfUnreadableBase();
    void unreadableDonorGoesOutEmpty_data();
    void unreadableDonorGoesOutEmpty();
    void previewOutcome_data();
    void previewOutcome();
    void previewAnnouncesInOrder();
    void previewLeavesBusyAlone();
    void previewSelectsEverythingAgain();
    void laterPreviewWins();
    void previewAnsweredAfterAnotherFileWasOpened();

    void selection();
    void selectionOutOfRange_data();
    void selectionOutOfRange();
    void selectAll();

    void swapForm_data();
    void swapForm();
    void swapWithoutPreviewSendsNoIndices();
    void swappedFileIsSavedAndOpened();
    void swapOfUnreadableBase();
    void failedSwapKeepsEverything_data();
    void failedSwapKeepsEverything();

private:
    QString makeFile(const QString &name, const QByteArray &content) const
    {
        return ::makeFile(m_dir->filePath(name), content);
    }
    void pickBoth();
    bool preview(const QByteArray &answer);
    bool nothingUnderWay() const;
    bool idle();

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<AppState> m_state;
};

void TestAppStateSegments::init()
{
    m_server = std::make_unique<RawHttpServer>();
    m_desktop = std::make_unique<UrlRecorder>();
    m_dir = std::make_unique<QTemporaryDir>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
}

void TestAppStateSegments::cleanup()
{
    m_state.reset();
    m_server.reset();
    m_desktop.reset();
    QDir(TestEnvironment::documents()).removeRecursively();
}

void TestAppStateSegments::pickBoth()
{
    m_state->pickSegmentFile(u"base"_s, makeFile(u"base.kvt"_s, "BASE"));
    m_state->pickSegmentFile(u"donor"_s, makeFile(u"donor.kvt"_s, "DONOR"));
}

bool TestAppStateSegments::nothingUnderWay() const
{
    return m_state->findChildren<QNetworkAccessManager *>().isEmpty();
}

bool TestAppStateSegments::idle()
{
    return waitUntil([this] { return nothingUnderWay(); });
}

bool TestAppStateSegments::preview(const QByteArray &answer)
{
    m_server->answerNext(answerWith(answer));
    m_state->previewSegments();
    return idle();
}

void TestAppStateSegments::pick_data()
{
    QTest::addColumn<QString>("which");
    QTest::addColumn<QByteArrayList>("fileNames");

    const QByteArrayList base{"new.kvt", "donor.kvt"};
    const QByteArrayList donor{"base.kvt", "new.kvt"};
    QTest::newRow("base") << u"base"_s << base;
    QTest::newRow("donor") << u"donor"_s << donor;
    QTest::newRow("Base") << u"Base"_s << donor;
    QTest::newRow("BASE") << u"BASE"_s << donor;
    QTest::newRow("blank-after") << u"base "_s << donor;
    QTest::newRow("empty") << u""_s << donor;
    QTest::newRow("anything") << u"%2"_s << donor;
}

void TestAppStateSegments::pick()
{
    QFETCH(QString, which);
    QFETCH(QByteArrayList, fileNames);
    pickBoth();
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    m_state->pickSegmentFile(which, makeFile(u"new.kvt"_s, "NEW"));
    QCOMPARE(m_state->status(), which + u" set: new.kvt"_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(status.count(), 1);
    QCOMPARE(segments.count(), 1);
    QVERIFY(nothingUnderWay());

    QVERIFY(preview("{}"));
    const QList<FormPart> parts = formParts(m_server->request(0));
    QCOMPARE(parts.size(), 4);
    QCOMPARE(parts.at(2).header("Content-Disposition"),
             "form-data; name=\"file\"; filename=\"" + fileNames.at(0) + '"');
    QCOMPARE(parts.at(3).header("Content-Disposition"),
             "form-data; name=\"donor\"; filename=\"" + fileNames.at(1) + '"');
}

void TestAppStateSegments::pickedTextIsTakenAsItIs()
{
    m_state->pickSegmentFile(u"%2"_s, u"/nowhere/R&D <b> %1.kvt"_s);
    QCOMPARE(m_state->status(), u"%2 set: R&D <b> %1.kvt"_s);
    m_state->pickSegmentFile(u"base"_s, u"/nowhere/folder/"_s);
    QCOMPARE(m_state->status(), u"base set: "_s);
    QCOMPARE(m_state->statusOK(), 1);
}

void TestAppStateSegments::baseAndDonorAreNeeded_data()
{
    QTest::addColumn<bool>("base");
    QTest::addColumn<bool>("donor");
    QTest::addColumn<bool>("open");
    QTest::addColumn<bool>("swap");

    for (const bool swap : {false, true}) {
        const char *const request = swap ? "swap" : "preview";
        QTest::addRow("%s-nothing", request) << false << false << false << swap;
        QTest::addRow("%s-only-base", request) << true << false << false << swap;
        QTest::addRow("%s-only-donor", request) << false << true << false << swap;
        QTest::addRow("%s-only-open-file", request) << false << false << true << swap;
        QTest::addRow("%s-base-and-open-file", request) << true << false << true << swap;
    }
}

void TestAppStateSegments::baseAndDonorAreNeeded()
{
    QFETCH(bool, base);
    QFETCH(bool, donor);
    QFETCH(bool, open);
    QFETCH(bool, swap);
    if (base)
        m_state->pickSegmentFile(u"base"_s, makeFile(u"base.kvt"_s, "BASE"));
    if (donor)
        m_state->pickSegmentFile(u"donor"_s, makeFile(u"donor.kvt"_s, "DONOR"));
    if (open)
        m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    QVERIFY(idle());
    const int requests = m_server->requestCount();
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    if (swap)
        m_state->applySegments();
    else
        m_state->previewSegments();
    QCOMPARE(m_state->status(), needsBoth);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(status.count(), 1);
    QCOMPARE(segments.count(), 0);
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingUnderWay());
    QCOMPARE(m_server->requestCount(), requests);
}

void TestAppStateSegments::base_data()
{
    QTest::addColumn<bool>("picked");
    QTest::addColumn<bool>("unpicked");
    QTest::addColumn<QByteArray>("part");

    const QByteArray open = "name=\"file\"; filename=\"open.kvt\": OPEN";
    QTest::newRow("picked") << true << false << QByteArray("name=\"file\"; filename=\"base.kvt\": BASE");
    QTest::newRow("open-file") << false << false << open;
    QTest::newRow("picked-and-emptied") << true << true << open;
}

void TestAppStateSegments::base()
{
    QFETCH(bool, picked);
    QFETCH(bool, unpicked);
    QFETCH(QByteArray, part);
    m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    QVERIFY(idle());
    m_state->pickSegmentFile(u"donor"_s, makeFile(u"donor.kvt"_s, "DONOR"));
    if (picked)
        m_state->pickSegmentFile(u"base"_s, makeFile(u"base.kvt"_s, "BASE"));
    if (unpicked)
        m_state->pickSegmentFile(u"base"_s, {});
    QVERIFY(preview("{}"));
    QCOMPARE(partsOf(m_server->request(1)).value(2), part);
    m_state->applySegments();
    QVERIFY(idle());
    QCOMPARE(partsOf(m_server->request(2)).value(3), part);
}

void TestAppStateSegments::baseIsReadFromDiskNotFromTheEditor()
{
    m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    QVERIFY(idle());
    QVERIFY(m_state->hexModel()->applyPatch(0, "EDIT"));
    m_state->pickSegmentFile(u"donor"_s, makeFile(u"donor.kvt"_s, "DONOR"));
    QVERIFY(preview("{}"));
    QCOMPARE(partsOf(m_server->request(1)).value(2),
             QByteArray("name=\"file\"; filename=\"open.kvt\": OPEN"));
    m_state->saveKvt(m_dir->filePath(u"saved.kvt"_s));
    QVERIFY(preview("{}"));
    QCOMPARE(partsOf(m_server->request(2)).value(2),
             QByteArray("name=\"file\"; filename=\"saved.kvt\": EDIT"));
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("EDIT"));
}

void TestAppStateSegments::pickedFilesOutliveAnOpen()
{
    pickBoth();
    QVERIFY(preview(previewOf(2)));
    m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    QVERIFY(idle());
    QCOMPARE(m_state->swapCandidates().size(), 2);
    QVERIFY(preview("{}"));
    QCOMPARE(partsOf(m_server->request(2)).sliced(2),
             QByteArrayList({"name=\"file\"; filename=\"base.kvt\": BASE",
                             "name=\"donor\"; filename=\"donor.kvt\": DONOR"}));
}

void TestAppStateSegments::previewForm()
{
    m_state->pickSegmentFile(u"base"_s, makeFile(u"my base \u00e9.kvt"_s, QByteArray("B\0\r\n\xff", 5)));
    m_state->pickSegmentFile(u"donor"_s, makeFile(u"the donor.KVT"_s, QByteArray("D\0--", 4)));
    QVERIFY(preview(previewOf(1)));
    const RecordedRequest request = m_server->request(0);
    QCOMPARE(request.requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    QCOMPARE(
        partsOf(request),
        QByteArrayList({"name=\"operation\": segment_swap_preview", "name=\"version\": 4.0.2",
                        "name=\"file\"; filename=\"my base \xc3\xa9.kvt\": " + QByteArray("B\0\r\n\xff", 5),
                        "name=\"donor\"; filename=\"the donor.KVT\": " + QByteArray("D\0--", 4)}));
    const QList<FormPart> parts = formParts(request);
    QCOMPARE(parts.at(2).header("Content-Type"), QByteArray("application/octet-stream"));
    QCOMPARE(parts.at(3).header("Content-Type"), QByteArray("application/octet-stream"));
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateSegments::previewOfUnreadableBase_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << u"no such file.kvt"_s;
    QTest::newRow("a-folder") << u"."_s;
    QTest::newRow("no-bytes") << u"empty.kvt"_s;
}

void TestAppStateSegments::previewOfUnreadableBase()
{
    QFETCH(QString, name);
    makeFile(u"empty.kvt"_s, {});
    pickBoth();
    QVERIFY(preview(previewOf(2)));
    m_state->pickSegmentFile(u"base"_s, m_dir->filePath(name));
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    m_state->previewSegments();
    QCOMPARE(m_state->status(), u"No input file for worker request."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(segments.count(), 0);
    QCOMPARE(m_state->swapCandidates().size(), 2);
    QVERIFY(nothingUnderWay());
    QCOMPARE(m_server->requestCount(), 1);
}

void TestAppStateSegments::unreadableDonorGoesOutEmpty_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("fileName");

    QTest::newRow("missing") << u"no such file.kvt"_s << QByteArray("no such file.kvt");
    QTest::newRow("a-folder") << u"folder"_s << QByteArray("folder");
    QTest::newRow("no-bytes") << u"empty.kvt"_s << QByteArray("empty.kvt");
}

void TestAppStateSegments::unreadableDonorGoesOutEmpty()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, fileName);
    makeFile(u"empty.kvt"_s, {});
    QVERIFY(QDir(m_dir->path()).mkpath(u"folder"_s));
    pickBoth();
    m_state->pickSegmentFile(u"donor"_s, m_dir->filePath(name));
    QVERIFY(preview(R"({"status":"error","message":"No donor."})"));
    QCOMPARE(partsOf(m_server->request(0)).last(), "name=\"donor\"; filename=\"" + fileName + "\": ");
    QCOMPARE(m_state->status(), u"No donor."_s);
    QCOMPARE(m_state->statusOK(), 0);
    m_server->answerNext(answerWith(R"({"status":"error","message":"No donor."})"));
    m_state->applySegments();
    QVERIFY(idle());
    QCOMPARE(partsOf(m_server->request(1)).last(), QByteArray("name=\"donor\"; filename=\"donor.bin\": "));
    QCOMPARE(m_state->statusOK(), 0);
}

void TestAppStateSegments::previewOutcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");
    // Out of two before.
    QTest::addColumn<int>("candidates");

    const auto ok = [](const QByteArray &body) { return httpAnswer(200, body); };
    QTest::newRow("three") << ok(previewOf(3)) << u"3 swap candidate(s)."_s << 1 << 3;
    QTest::newRow("one") << ok(previewOf(1)) << u"1 swap candidate(s)."_s << 1 << 1;
    QTest::newRow("none") << ok(previewOf(0)) << u"0 swap candidate(s)."_s << 1 << 0;
    QTest::newRow("member-missing") << ok(R"({"status":"ok"})") << u"0 swap candidate(s)."_s << 1 << 0;
    QTest::newRow("member-of-other-type")
        << ok(R"({"status":"ok","candidates":"none"})") << u"0 swap candidate(s)."_s << 1 << 0;
    // Bytes count as a produced file, which is a success without a text.
    QTest::newRow("a-file") << ok("bytes") << u"0 swap candidate(s)."_s << 1 << 0;
    QTest::newRow("array") << ok("[{}]") << u"0 swap candidate(s)."_s << 1 << 0;
    QTest::newRow("refused") << ok(R"({"status":"error","message":"Not alike.","candidates":[{}]})")
                             << u"Not alike."_s << 0 << 2;
    QTest::newRow("refused-error") << ok(R"({"message":"","error":"e"})") << u"e"_s << 0 << 2;
    QTest::newRow("refused-status") << ok(R"({"status":"fail"})") << u"Worker error: fail"_s << 0 << 2;
    QTest::newRow("cut-json") << ok(R"({"status":"ok","candidates":[{)") << u"Worker error: "_s << 0 << 2;
    QTest::newRow("empty") << ok({}) << u"Worker returned empty response."_s << 0 << 2;
    // "!" stands for one of Qt's error texts.
    QTest::newRow("500-empty") << httpAnswer(500, {}) << u"!"_s << 0 << 2;
    QTest::newRow("500-refused") << httpAnswer(500, R"({"status":"no","message":"m"})") << u"m"_s << 0 << 2;
    QTest::newRow("500-ok") << httpAnswer(500, previewOf(1)) << u"1 swap candidate(s)."_s << 1 << 1;
    QTest::newRow("closed-without-a-byte") << QByteArray() << u"!"_s << 0 << 2;
}

void TestAppStateSegments::previewOutcome()
{
    QFETCH(QByteArray, answer);
    QFETCH(QString, status);
    QFETCH(int, level);
    pickBoth();
    QVERIFY(preview(R"({"status":"ok","candidates":[{"label":"old 0"},{"label":"old 1"}]})"));
    const QVariantList before = m_state->swapCandidates();
    m_state->setVin(u"OLDVIN"_s);
    QSignalSpy statusChanges(m_state.get(), &AppState::statusChanged);
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    m_server->answerNext({answer});
    m_state->previewSegments();
    QVERIFY(idle());
    QCOMPARE(m_state->statusOK(), level);
    if (status == u"!"_s)
        QVERIFY(!m_state->status().isEmpty());
    else
        QCOMPARE(m_state->status(), status);
    QCOMPARE(statusChanges.count(), 1);
    QCOMPARE(segments.count(), level);
    QCOMPARE(identifiers.count(), level);
    QTEST(int(m_state->swapCandidates().size()), "candidates");
    QCOMPARE(m_state->swapCandidates() == before, level == 0);
    QCOMPARE(m_state->vin(), answer.contains("PREVIEWVIN") ? u"PREVIEWVIN"_s : u"OLDVIN"_s);
    QCOMPARE(m_server->requestCount(), 2);
}

void TestAppStateSegments::previewAnnouncesInOrder()
{
    pickBoth();
    QStringList seen;
    connect(m_state.get(), &AppState::identifiersChanged, this,
            [&] { seen.append(u"identifiers "_s + m_state->vin()); });
    connect(m_state.get(), &AppState::segmentsChanged, this,
            [&] { seen.append(u"segments %1"_s.arg(m_state->swapCandidates().size())); });
    connect(m_state.get(), &AppState::statusChanged, this,
            [&] { seen.append(u"status "_s + m_state->status()); });
    QVERIFY(preview(previewOf(2)));
    QCOMPARE(seen,
             QStringList({u"identifiers PREVIEWVIN"_s, u"segments 2"_s, u"status 2 swap candidate(s)."_s}));
}

void TestAppStateSegments::previewLeavesBusyAlone()
{
    pickBoth();
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    m_server->answerNext(holdRequest());
    m_state->previewSegments();
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QVERIFY(!m_state->busy());
    QCOMPARE(status.count(), 0);
    m_server->answerHeld(0, answerWith(previewOf(1)));
    QVERIFY(idle());
    QVERIFY(preview("refused"));
    QCOMPARE(busy.count(), 0);

    // A conversion's own flag stays as it is too.
    m_server->answerNext(holdRequest());
    m_state->applySegments();
    WAIT_COMPARE(m_server->completeRequestCount(), 3);
    m_server->answerNext(answerWith(previewOf(1)));
    m_state->previewSegments();
    WAIT_COMPARE(m_state->status(), u"1 swap candidate(s)."_s);
    QVERIFY(m_state->busy());
}

void TestAppStateSegments::previewSelectsEverythingAgain()
{
    pickBoth();
    QVERIFY(preview(previewOf(3)));
    m_state->selectAllCandidates(false);
    QVERIFY(preview(previewOf(3)));
    const QVariantList candidates = m_state->swapCandidates();
    for (int i = 0; i < 3; ++i) {
        const QVariantMap expected{{u"label"_s, u"L%1"_s.arg(i)}, {u"index"_s, i}, {u"selected"_s, true}};
        QCOMPARE(candidates.at(i).toMap(), expected);
    }
}

void TestAppStateSegments::laterPreviewWins()
{
    pickBoth();
    m_server->answerAlways(holdRequest());
    m_state->previewSegments();
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    m_state->previewSegments();
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    m_server->answerHeld(1, answerWith(previewOf(5)));
    WAIT_COMPARE(m_state->swapCandidates().size(), 5);
    m_server->answerHeld(0, answerWith(previewOf(1)));
    WAIT_COMPARE(m_state->swapCandidates().size(), 1);
}

// Its numbers are those of the file it was asked for; the candidates belong to the picked files.
void TestAppStateSegments::previewAnsweredAfterAnotherFileWasOpened()
{
    m_state->openKvt(makeFile(u"first.kvt"_s, "FIRST"));
    QVERIFY(idle());
    pickBoth();
    m_server->answerNext(holdRequest());
    m_state->previewSegments();
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"SECONDVIN","modules":[{"mainOs":"OS2"}]})"));
    m_state->openKvt(makeFile(u"second.kvt"_s, "SECOND"));
    WAIT_COMPARE(m_state->vin(), u"SECONDVIN"_s);
    const QVariantList modules = m_state->modules();
    QCOMPARE(modules.size(), 1);
    QSignalSpy identifiers(m_state.get(), &AppState::identifiersChanged);
    m_server->answerHeld(1, answerWith(previewOf(3)));
    QVERIFY(idle());
    QCOMPARE(m_state->status(), u"3 swap candidate(s)."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->swapCandidates().size(), 3);
    QCOMPARE(identifiers.count(), 0);
    QCOMPARE(m_state->vin(), u"SECONDVIN"_s);
    QCOMPARE(m_state->modules(), modules);
    QCOMPARE(m_state->fileName(), u"second.kvt"_s);
}

void TestAppStateSegments::selection()
{
    pickBoth();
    QVERIFY(preview(previewOf(3)));
    const QVariantList before = m_state->swapCandidates();
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    QSignalSpy status(m_state.get(), &AppState::statusChanged);
    m_state->setCandidateSelected(1, false);
    QCOMPARE(segments.count(), 1);
    QVariantMap second = before.at(1).toMap();
    second.insert(u"selected"_s, false);
    QCOMPARE(m_state->swapCandidates(), QVariantList({before.at(0), second, before.at(2)}));
    m_state->setCandidateSelected(1, false);
    QCOMPARE(segments.count(), 2);
    m_state->setCandidateSelected(1, true);
    QCOMPARE(segments.count(), 3);
    QCOMPARE(m_state->swapCandidates(), before);
    QCOMPARE(status.count(), 0);
}

void TestAppStateSegments::selectionOutOfRange_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("before-the-first") << -1;
    QTest::newRow("one-past-the-last") << 3;
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void TestAppStateSegments::selectionOutOfRange()
{
    QFETCH(int, index);
    m_state->setCandidateSelected(index, false);
    pickBoth();
    QVERIFY(preview(previewOf(3)));
    const QVariantList before = m_state->swapCandidates();
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    m_state->setCandidateSelected(index, false);
    QCOMPARE(segments.count(), 0);
    QCOMPARE(m_state->swapCandidates(), before);
}

void TestAppStateSegments::selectAll()
{
    QSignalSpy segments(m_state.get(), &AppState::segmentsChanged);
    m_state->selectAllCandidates(true);
    QCOMPARE(segments.count(), 0);
    pickBoth();
    QVERIFY(preview(previewOf(3)));
    m_state->setCandidateSelected(1, false);
    for (const bool selected : {false, true}) {
        segments.clear();
        m_state->selectAllCandidates(selected);
        QCOMPARE(segments.count(), 3);
        for (const QVariant &candidate : m_state->swapCandidates())
            QCOMPARE(candidate.toMap().value(u"selected"_s), QVariant(selected));
    }
}

void TestAppStateSegments::swapForm_data()
{
    QTest::addColumn<QList<int>>("unselected");
    QTest::addColumn<QByteArray>("indices");

    QTest::newRow("all") << QList<int>() << QByteArray("0,1,2,3,4");
    QTest::newRow("without-1-and-3") << QList<int>{1, 3} << QByteArray("0,2,4");
    QTest::newRow("only-the-last") << QList<int>{0, 1, 2, 3} << QByteArray("4");
    QTest::newRow("none") << QList<int>{0, 1, 2, 3, 4} << QByteArray();
}

void TestAppStateSegments::swapForm()
{
    QFETCH(QList<int>, unselected);
    QFETCH(QByteArray, indices);
    pickBoth();
    QVERIFY(preview(previewOf(5)));
    for (const int index : unselected)
        m_state->setCandidateSelected(index, false);
    m_state->applySegments();
    QVERIFY(m_state->busy());
    QVERIFY(idle());
    QVERIFY(!m_state->busy());
    QCOMPARE(m_server->request(1).requestLine(), QByteArray("POST /api/kvt_worker/process.aspx HTTP/1.1"));
    QCOMPARE(
        partsOf(m_server->request(1)),
        QByteArrayList({"name=\"operation\": segment_swap", "name=\"swap_candidate_indices\": " + indices,
                        "name=\"version\": 4.0.2", "name=\"file\"; filename=\"base.kvt\": BASE",
                        "name=\"donor\"; filename=\"donor.bin\": DONOR"}));
    QCOMPARE(m_server->requestCount(), 2);
}

void TestAppStateSegments::swapWithoutPreviewSendsNoIndices()
{
    pickBoth();
    m_state->applySegments();
    QVERIFY(idle());
    QCOMPARE(partsOf(m_server->request(0)).value(1), QByteArray("name=\"swap_candidate_indices\": "));
}

void TestAppStateSegments::swappedFileIsSavedAndOpened()
{
    m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    QVERIFY(idle());
    m_state->pickSegmentFile(u"donor"_s, makeFile(u"donor.kvt"_s, "DONOR"));
    QVERIFY(preview(previewOf(2)));
    m_server->answerNext(answerWith("SWAPPED"));
    m_state->applySegments();
    QVERIFY(idle());
    QCOMPARE(m_state->status(), u"Saved swapped.kvt"_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(m_state->fileName(), u"swapped.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("SWAPPED"));
    QCOMPARE(m_desktop->opened, QList<QUrl>{QUrl::fromLocalFile(TestEnvironment::documents())});
    QCOMPARE(m_state->swapCandidates().size(), 2);
    QCOMPARE(contentOf(TestEnvironment::documents() + u"/swapped.kvt"_s), QByteArray("SWAPPED"));
    // Each file as it was opened asks for its identifiers.
    QCOMPARE(m_server->requestCount(), 4);
    QCOMPARE(formField(m_server->request(3), "operation"), QByteArray("kvt_info"));

    // With no base picked, the result is the next base.
    m_state->applySegments();
    QVERIFY(idle());
    QCOMPARE(partsOf(m_server->request(4)).value(3),
             QByteArray("name=\"file\"; filename=\"swapped.kvt\": SWAPPED"));
}

void TestAppStateSegments::swapOfUnreadableBase()
{
    pickBoth();
    m_state->pickSegmentFile(u"base"_s, m_dir->filePath(u"no such file.kvt"_s));
    QSignalSpy busy(m_state.get(), &AppState::busyChanged);
    m_state->applySegments();
    QCOMPARE(m_state->status(), u"No input file."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(busy.count(), 0);
    QVERIFY(nothingUnderWay());
}

void TestAppStateSegments::failedSwapKeepsEverything_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");

    QTest::newRow("refused") << httpAnswer(200, R"({"status":"error","message":"Nothing to swap."})")
                             << u"Nothing to swap."_s;
    QTest::newRow("empty") << httpAnswer(200, {}) << u"Worker returned empty response."_s;
    QTest::newRow("500-json") << httpAnswer(500, R"({"error":"Worker down"})") << u"Worker down"_s;
}

void TestAppStateSegments::failedSwapKeepsEverything()
{
    QFETCH(QByteArray, answer);
    m_state->openKvt(makeFile(u"open.kvt"_s, "OPEN"));
    pickBoth();
    QVERIFY(idle());
    QVERIFY(preview(previewOf(2)));
    m_state->setCandidateSelected(0, false);
    const QVariantList before = m_state->swapCandidates();
    m_server->answerNext({answer});
    m_state->applySegments();
    QVERIFY(idle());
    QTEST(m_state->status(), "status");
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->busy());
    QCOMPARE(m_state->swapCandidates(), before);
    QCOMPARE(m_state->fileName(), u"open.kvt"_s);
    QCOMPARE(m_state->currentKvtBytes(), QByteArray("OPEN"));
    QVERIFY(!QFile::exists(TestEnvironment::documents() + u"/swapped.kvt"_s));
    QCOMPARE(m_desktop->opened, QList<QUrl>());
}

KVTEDITOR_TEST_MAIN(TestAppStateSegments)
#include "tst_AppStateSegments.moc"
