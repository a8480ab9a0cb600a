#include "EndpointTest.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

const QByteArray bareObject = R"({"status":"ok"})";
const QByteArray bareObjectTwice = R"({"status":"no","status":"ok"})";

namespace {

bool saysOk(const QByteArray &body)
{
    QByteArray text = body;
    if (text.startsWith("\xef\xbb\xbf"))
        text.remove(0, 3);
    return text == bareObject || text == bareObjectTwice;
}

EndpointOutcome workerOutcome(const EndpointOperation &operation, bool failed, const QByteArray &body,
                              bool isObject)
{
    if (failed && body.isEmpty())
        return {u"!"_s};
    if (isObject) {
        // Where an answer is shown as it is, it is this one.
        const bool shown = operation.bareStatus == bareObject;
        return {QString::fromUtf8(shown ? body.constData() : operation.bareStatus), 1};
    }
    if (body.startsWith('{'))
        return {u"Worker error: "_s};
    if (body.isEmpty())
        return {u"Worker returned empty response."_s};
    if (operation.decoding == Decoding::Preview)
        return {QString::fromUtf8(operation.bareStatus), 1};
    return {QString::fromUtf8(operation.savedStatus), 1, true};
}

bool matches(const QString &shown, const QString &expected)
{
    if (!expected.endsWith(u'!'))
        return shown == expected;
    const QString start = expected.chopped(1);
    return shown.startsWith(start) && shown.size() > start.size() && !shown.startsWith(u"HTTP "_s);
}

// Qt repeats a GET up to three times when the server closes without an answer. Each time it opens a
// new connection, as it does for a POST that it then does not resend; 6.8 and 6.11 also open a spare one.
constexpr int mostGets = 4;
constexpr int mostConnections = 2 * mostGets;

bool opensItsFile(const EndpointOperation &operation)
{
    return operation.destination != Destination::Documents;
}

} // namespace

EndpointOutcome expectedOutcome(const EndpointOperation &operation, bool failed, const QByteArray &body,
                                int httpStatus)
{
    const bool isObject = saysOk(body);
    const EndpointOutcome bare{QString::fromUtf8(operation.bareStatus), operation.bareLevel};
    switch (operation.decoding) {
    case Decoding::Silent:
        return {QString::fromUtf8(operation.goodStatus), 1};
    case Decoding::Json:
        if (failed)
            return {u"!"_s};
        return isObject ? bare
                        : EndpointOutcome{u"HTTP %1: %2"_s.arg(QString::number(httpStatus),
                                                               QString::fromUtf8(body.left(300)))};
    case Decoding::Get:
        return failed ? EndpointOutcome{u"Update check failed: !"_s} : bare;
    case Decoding::Bytes:
        if (failed && body.isEmpty())
            return {u"!"_s};
        if (body.isEmpty() && operation.destination == Destination::TemporaryAndOpened)
            return {u"Could not read file."_s, 0, true};
        return {QString::fromUtf8(operation.savedStatus).replace(u"%1"_s, QString::number(body.size())), 1,
                true};
    case Decoding::Worker:
    case Decoding::Preview:
        return workerOutcome(operation, failed, body, isObject);
    }
    return {};
}

const EndpointOperation &operationAt(int index)
{
    return endpointOperations()[static_cast<std::size_t>(index)];
}

const EndpointOperation &operationNamed(QByteArrayView name)
{
    const auto all = endpointOperations();
    const auto found = std::find_if(all.begin(), all.end(), [&name](const EndpointOperation &operation) {
        return operation.name == name;
    });
    if (found == all.end())
        qFatal("No operation is called %s", name.constData());
    return *found;
}

QList<int> allOperations()
{
    QList<int> indexes(static_cast<qsizetype>(endpointOperations().size()));
    std::iota(indexes.begin(), indexes.end(), 0);
    return indexes;
}

QList<int> operationsToTry()
{
    QList<int> indexes = allOperations();
    if (!isExhaustive()) {
        // JSON, a form for bytes, a form for the worker, a document.
        const QByteArrayList eachWay{"sendToDev", "xdfDownload", "convertOp", "checkUpdate"};
        indexes.removeIf([&eachWay](int index) { return !eachWay.contains(operationAt(index).name); });
    }
    return indexes;
}

void addOperationRows()
{
    QTest::addColumn<int>("operation");
    for (const int index : operationsToTry())
        QTest::newRow(operationAt(index).name) << index;
}

QStringList differences(const Snapshot &before, const Snapshot &after)
{
    QStringList names;
    for (auto entry = before.begin(); entry != before.end(); ++entry) {
        if (!after.contains(entry.key()) || after.value(entry.key()) != entry.value())
            names.append(entry.key());
    }
    for (auto entry = after.begin(); entry != after.end(); ++entry) {
        if (!before.contains(entry.key()))
            names.append(u"new: "_s + entry.key());
    }
    return names;
}

Snapshot fileAndDisk(Snapshot snapshot)
{
    snapshot.removeIf([](const auto &entry) {
        const QStringList kept{u"fileName"_s, u"bytes"_s, u"cursor"_s, u"tab"_s, u"busy"_s};
        return !entry.key().startsWith(u'/') && !kept.contains(entry.key());
    });
    return snapshot;
}

QString savedPath(const EndpointOperation &operation)
{
    const QString folder = operation.destination == Destination::TemporaryAndOpened
        ? QDir::tempPath()
        : TestEnvironment::documents();
    return folder + u'/' + QLatin1StringView(operation.savedName);
}

Snapshot withSavedFile(const EndpointOperation &operation, Snapshot snapshot, const QByteArray &body)
{
    snapshot.insert(savedPath(operation), body);
    if (operation.destination == Destination::TemporaryAndOpened)
        snapshot.insert(u"tab"_s, u"main"_s);
    if (opensItsFile(operation) && !body.isEmpty()) {
        snapshot.insert(u"fileName"_s, QString::fromLatin1(operation.savedName));
        snapshot.insert(u"bytes"_s, body);
        const int last = static_cast<int>(body.size()) - 1;
        snapshot.insert(u"cursor"_s, std::min(snapshot.value(u"cursor"_s).toInt(), last));
    }
    return snapshot;
}

void EndpointTest::init()
{
    m_server = std::make_unique<RawHttpServer>();
    m_desktop = std::make_unique<UrlRecorder>();
    m_fixture = std::make_unique<EndpointFixture>();
    QVERIFY(m_fixture->fill());
    m_fixture->setApiBase(m_server->baseUrl());
}

void EndpointTest::cleanup()
{
    m_fixture.reset();
    m_server.reset();
    m_desktop.reset();
}

void EndpointTest::begin(const EndpointOperation &operation)
{
    disconnect(m_listening);
    m_said.clear();
    m_fixture->start(operation);
    const AppState *const state = &m_fixture->state();
    m_listening =
        connect(state, &AppState::statusChanged, this, [this, state] { m_said.append(state->status()); });
    m_before = m_fixture->snapshot();
    QCOMPARE(m_before.value(u"busy"_s).toBool(), operation.decoding == Decoding::Worker);
    m_before.insert(u"busy"_s, false);
}

void EndpointTest::checkExactly(const EndpointOperation &operation, const EndpointOutcome &outcome,
                                const QByteArray &body)
{
    const AppState &state = m_fixture->state();
    QVERIFY2(matches(state.status(), outcome.status), qPrintable(state.status()));
    QCOMPARE(state.statusOK(), outcome.level);
    checkStatuses(operation);
    const Snapshot after = m_fixture->snapshot();
    if (!outcome.saved) {
        // A success may change what the operation is about, and nothing else.
        const bool whole = outcome.level == 0 || operation.decoding == Decoding::Silent;
        QCOMPARE(whole ? differences(m_before, after)
                       : differences(fileAndDisk(m_before), fileAndDisk(after)),
                 QStringList());
        return;
    }
    QCOMPARE(differences(withSavedFile(operation, fileAndDisk(m_before), body), fileAndDisk(after)),
             QStringList());
}

void EndpointTest::checkLoosely(const EndpointOperation &operation)
{
    const Snapshot after = m_fixture->snapshot();
    QVERIFY(!after.value(u"busy"_s).toBool());
    checkStatuses(operation);
    const bool emptyFile = m_fixture->state().status() == u"Could not read file."_s;
    if (m_fixture->state().statusOK() == 0 && !emptyFile) {
        QCOMPARE(differences(m_before, after), QStringList());
        return;
    }
    // Whether it saved a file, and which bytes, is Qt's to decide; what follows from that is not.
    Snapshot expected = fileAndDisk(m_before);
    if (*operation.savedName != '\0' && after.contains(savedPath(operation)))
        expected = withSavedFile(operation, expected, after.value(savedPath(operation)).toByteArray());
    QCOMPARE(differences(expected, fileAndDisk(after)), QStringList());
}

void EndpointTest::checkStatuses(const EndpointOperation &operation)
{
    if (operation.decoding == Decoding::Silent) {
        QCOMPARE(m_said, QStringList());
        return;
    }
    const AppState &state = m_fixture->state();
    QStringList expected{state.status()};
    // An accepted reply leads to a second request, which may fail.
    const bool replies = QLatin1StringView(operation.name) == "replyTicket"_L1;
    if (replies && (state.statusOK() == 1 || m_said.size() > 1))
        expected.prepend(u"Reply sent."_s);
    if (operation.destination == Destination::DocumentsAndOpened
        && state.status() == QLatin1StringView(operation.savedStatus)) {
        expected.prepend(u"Opened %1 \u2014 %2 bytes."_s.arg(
            QLatin1StringView(operation.savedName), QString::number(state.currentKvtBytes().size())));
    }
    QCOMPARE(m_said, expected);
}

void EndpointTest::checkRequests(const EndpointOperation &operation, const RawAnswer &answer)
{
    const bool mayBeUnsent = answer.moment == RawAnswer::Moment::OnConnect;
    // A socket that is reset before it knows that it is connected connects again, until it gets through or
    // thirty seconds are over, and no signal tells of it. There is no telling how often that is.
    if (!mayBeUnsent || answer.ending != RawAnswer::Ending::Reset) {
        QVERIFY2(m_server->connectionCount() <= mostConnections,
                 qPrintable(QString::number(m_server->connectionCount())));
    }
    const int requests = m_server->requestCount();
    if (mayBeUnsent && requests == 0)
        return;
    if (operation.decoding == Decoding::Get) {
        QVERIFY2(requests >= 1 && requests <= mostGets, qPrintable(QString::number(requests)));
        return;
    }
    QVERIFY2(requests == 1 || (m_fixture->state().statusOK() == 1 && requests == operation.goodRequests),
             qPrintable(QString::number(requests)));
}

void EndpointTest::checkNextGoodOne(const EndpointOperation &operation)
{
    // Qt may have repeated the last GET without waiting for its answer; here it cannot take the good one.
    m_server = std::make_unique<RawHttpServer>();
    m_fixture->setApiBase(m_server->baseUrl());
    m_server->answerNext(answerWith(operation.goodAnswer));
    // The lists may be empty by now, and the open file another.
    QVERIFY(m_fixture->settle());
    m_fixture->start(operation);
    QVERIFY(m_fixture->settle());
    QCOMPARE(m_fixture->state().status(), QString::fromUtf8(operation.goodStatus));
    QCOMPARE(m_fixture->state().statusOK(), 1);
    QVERIFY(!m_fixture->state().busy());
    QCOMPARE(m_server->requestCount(), operation.goodRequests);
    if (operation.decoding == Decoding::Silent)
        QCOMPARE(m_fixture->state().vin(), u"GOODVIN"_s);
    if (*operation.savedName != '\0')
        QVERIFY(QFile::exists(savedPath(operation)));
}
