#include "EndpointTest.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QNetworkAccessManager>
#include <QTest>

#include <iterator>

using namespace Qt::StringLiterals;

namespace {

// Those that make a tune file of another one, and open it.
constexpr EndpointOperation imports[] = {
    {"ctz2kvt", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &folder) { state.convertOp(u"ctz2kvt"_s, folder + u"/in.vbf"_s); },
     "KVT", "Saved from_ctz.kvt", 2, R"({"status":"ok"})", 1, "from_ctz.kvt", "Saved from_ctz.kvt",
     Destination::DocumentsAndOpened},
    {"bin2kvt", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &folder) { state.convertOp(u"bin2kvt"_s, folder + u"/in.bin"_s); },
     "KVT", "Saved imported.kvt", 2, R"({"status":"ok"})", 1, "imported.kvt", "Saved imported.kvt",
     Destination::DocumentsAndOpened},
    {"cm2450_import", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &folder) {
         state.convertOp(u"cm2450_import"_s, folder + u"/in.bin"_s, folder + u"/in.vbf"_s);
     },
     "KVT", "Saved cm2450_imported.kvt", 2, R"({"status":"ok"})", 1, "cm2450_imported.kvt",
     "Saved cm2450_imported.kvt", Destination::DocumentsAndOpened},
};

constexpr int endpointCount = 18;

const EndpointOperation &operationOf(int index)
{
    return index < endpointCount ? operationAt(index) : imports[index - endpointCount];
}

void addRows()
{
    QTest::addColumn<int>("operation");
    for (int index = 0; index < endpointCount + int(std::size(imports)); ++index)
        QTest::newRow(operationOf(index).name) << index;
}

} // namespace

/// Every operation whose answer comes when another file is open, and edited.
class TestLateAnswers : public EndpointTest
{
    Q_OBJECT

private slots:
    void everyOperationIsTried();
    void goodAnswer_data();
    void goodAnswer();
    void noAnswer_data();
    void noAnswer();

private:
    void openAnotherMeanwhile(const EndpointOperation &operation);
    void checkLaterFileOnDisk();
};

/// Holds the operation's request, and opens and edits a file that it knows nothing of.
void TestLateAnswers::openAnotherMeanwhile(const EndpointOperation &operation)
{
    const QString later = makeFile(m_fixture->folder() + u"/later.kvt"_s, "LATER FILE");
    m_server->answerNext(holdRequest());
    begin(operation);
    WAIT_COMPARE(m_server->completeRequestCount(), 1);

    AppState &state = m_fixture->state();
    m_server->answerNext(answerWith(R"({"status":"ok","vin":"LATERVIN"})"));
    state.openKvt(later);
    WAIT_COMPARE(state.findChildren<QNetworkAccessManager *>().size(), 1);
    QCOMPARE(state.vin(), u"LATERVIN"_s);
    QVERIFY(state.hexModel()->applyPatch(6, "EDIT"));
    QCOMPARE(state.currentKvtBytes(), "LATER EDIT");
    m_before = m_fixture->snapshot();
    m_before.insert(u"busy"_s, false);
    m_said.clear();
}

/// Nothing but a save writes there.
void TestLateAnswers::checkLaterFileOnDisk()
{
    QCOMPARE(contentOf(m_fixture->folder() + u"/later.kvt"_s), "LATER FILE");
}

void TestLateAnswers::everyOperationIsTried()
{
    QCOMPARE(int(endpointOperations().size()), endpointCount);
}

void TestLateAnswers::goodAnswer_data()
{
    addRows();
}

// A file that was requested in order to be opened is opened, even if another one is open by then. All other
// answers leave the open file, its edits and its identifiers unchanged.
void TestLateAnswers::goodAnswer()
{
    QFETCH(int, operation);
    const EndpointOperation &late = operationOf(operation);
    openAnotherMeanwhile(late);
    if (QTest::currentTestFailed())
        return;
    QByteArray answer = late.goodAnswer;
    if (late.decoding == Decoding::Preview)
        answer.replace(R"("status":"ok",)", R"("status":"ok","vin":"EARLIER",)");
    m_server->answerAlways(answerWith("{}"));
    m_server->answerHeld(0, answerWith(answer));
    QVERIFY(m_fixture->settle());

    const AppState &state = m_fixture->state();
    if (late.decoding != Decoding::Silent)
        QCOMPARE(state.status(), QString::fromUtf8(late.goodStatus));
    checkStatuses(late);
    QVERIFY(!state.busy());
    checkLaterFileOnDisk();
    const bool opens = late.destination != Destination::Documents;
    QCOMPARE(state.vin(), opens ? QString() : u"LATERVIN"_s);
    QCOMPARE(m_server->requestCount(), late.goodRequests + 1);

    Snapshot expected = fileAndDisk(m_before);
    if (late.decoding == Decoding::Json && *late.savedName != '\0')
        expected.insert(savedPath(late), QByteArray("PATCH"));
    else if (*late.savedName != '\0')
        expected = withSavedFile(late, expected, answer);
    QCOMPARE(differences(expected, fileAndDisk(m_fixture->snapshot())), QStringList());
}

void TestLateAnswers::noAnswer_data()
{
    addRows();
}

void TestLateAnswers::noAnswer()
{
    QFETCH(int, operation);
    const EndpointOperation &late = operationOf(operation);
    openAnotherMeanwhile(late);
    if (QTest::currentTestFailed())
        return;
    // Qt repeats a GET.
    m_server->answerAlways({});
    m_server->answerHeld(0, {});
    QVERIFY(m_fixture->settle());
    EndpointOutcome outcome = expectedOutcome(late, true, {});
    if (late.decoding == Decoding::Silent)
        outcome.status = u"Opened later.kvt \u2014 10 bytes."_s;
    checkExactly(late, outcome, {});
    QCOMPARE(m_fixture->state().vin(), u"LATERVIN"_s);
    checkLaterFileOnDisk();
    if (late.decoding != Decoding::Get)
        QCOMPARE(m_server->requestCount(), 2);
}

KVTEDITOR_TEST_MAIN(TestLateAnswers)
#include "tst_LateAnswers.moc"
