#include "EndpointTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <array>
#include <sys/resource.h>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int megabyte = 1'000'000;
constexpr int bombSize = 200 * megabyte;
#ifdef KVTEDITOR_SANITIZED
// As much as a module's memory is unpacked before it is given up, and the sanitizers copy a block that grows.
constexpr int mostForBomb = bombSize * 3 / 4;
#else
constexpr int mostForBomb = bombSize / 2;
#endif
constexpr int mebibyte = 1024 * 1024;

const std::pair<const char *, QByteArray> oddValues[] = {
    {"null", "null"},
    {"true", "true"},
    {"false", "false"},
    {"empty-text", "\"\""},
    {"text", "\"text\""},
    {"number", "7"},
    {"number-negative", "-7"},
    {"number-too-big", "2147483648"},
    {"number-past-53-bits", "9007199254740993"},
    {"number-negative-zero", "-0.0"},
    {"number-not-whole", "12.7"},
    {"number-past-double", "1e400"},
    {"empty-array", "[]"},
    {"empty-object", "{}"},
    {"array-of-arrays", "[[1]]"},
    {"odd-array", R"([null,1,"x",[[]],{},{"id":[],"title":{},"rows":[1,{"label":2}],"rows":5}])"},
    {"name-outside", R"([{"id":1,"title":"../../x","filename":"../../x.kvt","name":"/etc/x"}])"},
    {"path-outside", R"("../../x.kvt")"},
    {"path-absolute", R"("/etc/x.kvt")"},
    {"long-text", "\"" + QByteArray(100'000, 'x') + "\""},
};

/// What an operation reads of an answer, each with something good.
struct Reads
{
    const char *operation;
    const char *members;
};

#define WORKER_MEMBERS R"("status":"ok","message":"m","error":"e")"
#define INFO_MEMBERS                                                                                         \
    R"("vin":"V","vin1":"V1","serial":"S","serial1":"S1","serial2":"S2","mainOs":"O","main_os":"O",)"        \
    R"("os1":"O","baseOs":"O","os":"O","gmSystem":"s","system":"s","module":"s","gmFuel":"f","fuel":"f",)"   \
    R"("gmSpeedometer":"p","speedometer":"p","gmEngineDiag":"d","engine_diag":"d","engineDiag":"d",)"        \
    R"("gmEngineOp":"o","engine_op":"o","engineOp":"o","interfaceCalId":"i","interfaceId":"i",)"             \
    R"("interface_id":"i","interfaceID":"i","created":"c","softwareVersion":"w","editor_version":"w",)"      \
    R"("modules":[{"mainOs":"OS1"}])"

constexpr Reads reads[] = {
    {"kvt_info", WORKER_MEMBERS},
    {"convertOp", WORKER_MEMBERS},
    {"toolConvert", WORKER_MEMBERS},
    {"previewSegments", WORKER_MEMBERS R"(,"candidates":[{}])"},
    {"applySegments", WORKER_MEMBERS},
    {"sendToDev", R"("status":"ok","ticket_id":"T","error":"e")"},
    {"xdfLogin", R"("session_token":"t","token":"t","credits":"1","error":"e")"},
    {"xdfCatalog", R"("items":[{}],"catalog":[{}])"},
    {"xdfDownload", R"("status":"ok","error":"e")"},
    {"loadPatches", R"("patches":[{}],"credits":"1")"},
    {"applyPatchToBin", R"("file_data":"UEFUQ0g=","status":"ok","message":"m","error":"e")"},
    {"stockSearch", R"("files":[{}],"items":[{}],"results":[{}])"},
    {"stockDownload", R"("error":"e")"},
    {"stockOpen", R"("error":"e")"},
    {"submitTicket", R"("status":"ok","ticket_id":"T","error":"e")"},
    {"loadTicket", R"("messages":["m"])"},
    {"replyTicket", R"("status":"ok","ok":true,"error":"e")"},
    {"checkUpdate", R"("latest_version":"9.9.9","download_url":"https://download.example/x")"},
};

/// What a tune file's information holds, and the two objects that it may stand in instead.
constexpr const char *information = R"("status":"ok",)" INFO_MEMBERS;
constexpr const char *nestedInformation = R"("status":"ok","kvt":{"vin":"V"},"identifiers":{"vin":"V"})";

/// A list that is shown, the members of its elements, and what is done with one of them.
struct Elements
{
    const char *operation;
    const char *before;
    std::array<const char *, 11> members;
    const char *behind;
    std::array<const char *, 2> next;
};

constexpr Elements elements[] = {
    {"xdfCatalog",
     "{\"items\":[{",
     {"id", "title", "name", "os_id", "os", "credits"},
     "}]}",
     {"xdfDownload"}},
    {"loadPatches",
     "{\"patches\":[{",
     {"id", "variant", "description", "credits_cost"},
     "}]}",
     {"applyPatchToBin"}},
    {"stockSearch",
     "{\"files\":[{",
     {"id", "path", "filename", "name", "os", "module", "module_type", "year", "make", "model"},
     "}]}",
     {"stockDownload", "stockOpen"}},
    {"previewSegments",
     "{\"status\":\"ok\",\"candidates\":[{",
     {"label", "targetIndex", "donorIndex", "index", "selected"},
     "}]}",
     {"applySegments"}},
    {"kvt_info",
     "{\"status\":\"ok\",\"modules\":[{",
     {"title", "vin", "serial", "mainOs", "rows"},
     "}]}",
     {"xdfCatalog"}},
    {"kvt_info", "{\"status\":\"ok\",\"modules\":[{\"rows\":[{", {"label", "value"}, "}]}]}", {"xdfCatalog"}},
};

/// A JSON object with each of these members set to the value.
QByteArray allSetTo(const QByteArray &value, std::span<const char *const> members)
{
    QByteArray text;
    for (const char *const member : members) {
        if (member)
            text += (text.isEmpty() ? "\"" : ",\"") + QByteArray(member) + "\":" + value;
    }
    return text;
}

/// The answer with that member set to the value, or left out when that is empty.
QByteArray withMember(const QByteArray &members, const QString &name, const QByteArray &value)
{
    QJsonObject answer = QJsonDocument::fromJson('{' + members + '}').object();
    answer.remove(name);
    const QByteArray rest = QJsonDocument(answer).toJson(QJsonDocument::Compact).sliced(1);
    if (value.isEmpty())
        return '{' + rest;
    return "{\"" + name.toUtf8() + "\":" + value + (answer.isEmpty() ? "" : ",") + rest;
}

/// Answers in which that member is odd: all others as given, and next to none, for a good one may come before
/// it or stand in for it.
QByteArrayList oddAnswers(const QByteArray &members, const QString &name, const QByteArray &value,
                          const QByteArrayList &statuses)
{
    QByteArrayList answers{withMember(members, name, value)};
    if (value.isEmpty())
        return answers;
    for (const QByteArray &status : statuses) {
        if (status.isEmpty() || name != u"status"_s)
            answers.append(withMember(status, name, value));
    }
    return answers;
}

void addOddValueRows()
{
    QTest::addColumn<QByteArray>("value");
    for (const auto &[name, value] : oddValues)
        QTest::newRow(name) << value;
}

/// Every file of the test's own folders, outside of the two in which files may appear.
QStringList filesElsewhere()
{
    QStringList files;
    QDirIterator all(TestEnvironment::home() + u"/.."_s, QDir::Files | QDir::Hidden,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString folder = QFileInfo(all.next()).absolutePath();
        if (QDir(folder) != QDir(TestEnvironment::documents()) && QDir(folder) != QDir::temp())
            files.append(all.filePath());
    }
    files.sort();
    return files;
}

/// A number of zeros, as gzip.
QByteArray gzippedZeros(int size)
{
    z_stream stream = {};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray zeros(megabyte, '\0');
    QByteArray packed(2 * megabyte, Qt::Uninitialized);
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    for (int left = size; left > 0; left -= megabyte) {
        stream.next_in = reinterpret_cast<Bytef *>(zeros.data());
        stream.avail_in = static_cast<uInt>(std::min(left, megabyte));
        deflate(&stream, left > megabyte ? Z_NO_FLUSH : Z_FINISH);
    }
    packed.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

/// The most memory that this process ever held, in bytes.
qint64 peakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

} // namespace

/// Whole answers with the wrong things in them, or too much.
class TestEndpointContent : public EndpointTest
{
    Q_OBJECT

private slots:
    // First, for it measures the peak of memory.
    void decompressionBomb_data();
    void decompressionBomb();
    void oddMembers_data();
    void oddMembers();
    void oneOddMember_data();
    void oneOddMember();
    void everyOperationHasItsMembers();
    void oddElements_data();
    void oddElements();
    void hundredThousandItems_data();
    void hundredThousandItems();
    void sixtyFourMebibytes_data();
    void sixtyFourMebibytes();
    void sixtyFourMebibytesOfFile();

private:
    void answerOnce(const EndpointOperation &operation, const QByteArray &body);
};

/// Answers the operation with this body and later requests with an empty object.
void TestEndpointContent::answerOnce(const EndpointOperation &operation, const QByteArray &body)
{
    m_server->answerAlways(answerWith("{}"));
    m_server->answerNext(answerWith(body));
    const int before = m_server->requestCount();
    begin(operation);
    QVERIFY(m_fixture->settle());
    const int requests = m_server->requestCount() - before;
    QVERIFY2(requests >= 1 && requests <= operation.goodRequests, qPrintable(QString::number(requests)));
}

void TestEndpointContent::decompressionBomb_data()
{
    addOperationRows();
}

void TestEndpointContent::decompressionBomb()
{
    QFETCH(int, operation);
    const EndpointOperation &tried = operationAt(operation);
    static const QByteArray bomb = gzippedZeros(bombSize);
    QVERIFY(bomb.size() < megabyte);
    m_server->answerAlways(answerWith("{}"));
    m_server->answerNext({httpAnswer(200, bomb, "Content-Encoding: gzip\r\n")});
    // The process's peak never falls, so it is the first row that would show a bomb.
    const qint64 peakBefore = peakMemory();
    begin(tried);
    QVERIFY(m_fixture->settle());
    QVERIFY2(peakMemory() - peakBefore < mostForBomb, qPrintable(QString::number(peakMemory() - peakBefore)));
    checkExactly(tried, expectedOutcome(tried, true, {}), {});
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointContent::oddMembers_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QByteArray>("value");

    for (const auto &[name, value] : oddValues) {
        for (const int index : operationsToTry())
            QTest::addRow("%s-%s", name, operationAt(index).name) << index << value;
    }
}

void TestEndpointContent::oddMembers()
{
    QFETCH(int, operation);
    QFETCH(QByteArray, value);
    const EndpointOperation &tried = operationAt(operation);
    const char *const members[] = {
        "message",      "error",   "ticket_id",  "session_token", "token",      "credits",
        "items",        "catalog", "patches",    "files",         "results",    "file_data",
        "ok",           "vin",     "candidates", "kvt",           "modules",    "latest_version",
        "download_url", "serial",  "mainOs",     "os1",           "identifiers"};
    const QByteArray rest = allSetTo(value, members);
    for (const QByteArray &status : {QByteArray("\"ok\""), value}) {
        answerOnce(tried, "{\"status\":" + status + ',' + rest + '}');
        checkLoosely(tried);
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY(m_fixture->fill());
    checkNextGoodOne(tried);
}

void TestEndpointContent::oneOddMember_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QByteArrayList>("statuses");
    const QByteArray ok = R"("status":"ok")";
    const QByteArrayList any{QByteArray(), ok, R"("status":"fail")"};
    for (const Reads &read : reads)
        QTest::newRow(read.operation) << QByteArray(read.operation) << QByteArray(read.members) << any;
    for (const char *const operation : {"kvt_info", "previewSegments"}) {
        // Any other status, and none of it is read.
        QTest::addRow("%s-information", operation)
            << QByteArray(operation) << QByteArray(information) << QByteArrayList{ok};
        QTest::addRow("%s-nested-information", operation)
            << QByteArray(operation) << QByteArray(nestedInformation) << QByteArrayList{ok};
    }
}

void TestEndpointContent::oneOddMember()
{
    QFETCH(QByteArray, operation);
    QFETCH(QByteArray, members);
    QFETCH(QByteArrayList, statuses);
    const EndpointOperation &tried = operationNamed(operation);
    const QStringList names = QJsonDocument::fromJson('{' + members + '}').object().keys();
    QVERIFY(!names.isEmpty());
    for (const QString &name : names) {
        QByteArrayList values{QByteArray()};
        for (const auto &entry : oddValues)
            values.append(entry.second);
        QByteArrayList answers;
        for (const QByteArray &value : std::as_const(values))
            answers += oddAnswers(members, name, value, statuses);
        for (const QByteArray &answer : std::as_const(answers)) {
            answerOnce(tried, answer);
            checkLoosely(tried);
            if (QTest::currentTestFailed()) {
                qWarning("%s", answer.left(1000).constData());
                return;
            }
        }
    }
    QVERIFY(m_fixture->fill());
    checkNextGoodOne(tried);
}

void TestEndpointContent::everyOperationHasItsMembers()
{
    QStringList listed;
    for (const Reads &read : reads)
        listed.append(QString::fromLatin1(read.operation));
    QStringList all;
    for (const EndpointOperation &operation : endpointOperations())
        all.append(QString::fromLatin1(operation.name));
    QCOMPARE(listed, all);
}

void TestEndpointContent::oddElements_data()
{
    addOddValueRows();
}

// What a list's element holds is used again: as a name, as a number to ask for.
void TestEndpointContent::oddElements()
{
    QFETCH(QByteArray, value);
    const QStringList elsewhere = filesElsewhere();
    for (const Elements &list : elements) {
        const EndpointOperation &shown = operationNamed(list.operation);
        answerOnce(shown, list.before + allSetTo(value, list.members) + list.behind);
        checkLoosely(shown);
        for (const char *const name : list.next) {
            if (!name)
                continue;
            const EndpointOperation &next = operationNamed(name);
            m_server->answerAlways(answerWith(next.goodAnswer));
            const int before = m_server->requestCount();
            m_fixture->start(next);
            QVERIFY(m_fixture->settle());
            QVERIFY2(m_server->requestCount() - before <= next.goodRequests, name);
            QVERIFY(!m_fixture->state().busy());
            QVERIFY2(m_fixture->state().statusOK() >= 0, name);
        }
        QCOMPARE(filesElsewhere(), elsewhere);
    }
    QVERIFY(m_fixture->fill());
    checkNextGoodOne(operationNamed("stockSearch"));
}

void TestEndpointContent::hundredThousandItems_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QString>("status");

    QTest::newRow("modules") << QByteArray("kvt_info") << QByteArray("modules")
                             << u"Opened other.kvt \u2014 5 bytes."_s;
    QTest::newRow("candidates") << QByteArray("previewSegments") << QByteArray("candidates")
                                << u"100000 swap candidate(s)."_s;
    QTest::newRow("catalogue") << QByteArray("xdfCatalog") << QByteArray("items")
                               << u"Catalog: 100000 item(s)."_s;
    QTest::newRow("patches") << QByteArray("loadPatches") << QByteArray("patches")
                             << u"100000 patch(es) for CAL."_s;
    QTest::newRow("stock-files") << QByteArray("stockSearch") << QByteArray("files")
                                 << u"100000 stock file(s)."_s;
    QTest::newRow("thread") << QByteArray("loadTicket") << QByteArray("messages") << u"Loaded ticket."_s;
}

void TestEndpointContent::hundredThousandItems()
{
    QFETCH(QByteArray, operation);
    QFETCH(QByteArray, member);
    const EndpointOperation &tried = operationNamed(operation);
    const QByteArray items = QByteArray("{\"id\":1},").repeated(99'999) + "{\"id\":1}";
    m_server->answerNext(answerWith("{\"status\":\"ok\",\"" + member + "\":[" + items + "]}"));
    begin(tried);
    QVERIFY(m_fixture->settle());
    QTEST(m_fixture->state().status(), "status");
    QCOMPARE(m_fixture->state().statusOK(), 1);
    QCOMPARE(m_server->requestCount(), tried.goodRequests);
    checkLoosely(tried);
    checkNextGoodOne(tried);
}

void TestEndpointContent::sixtyFourMebibytes_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("behind");

    for (const int index : operationsToTry()) {
        const char *const name = operationAt(index).name;
        QTest::addRow("file-%s", name) << index << QByteArray() << QByteArray();
        QTest::addRow("json-%s", name)
            << index << QByteArray(R"({"status":"ok","padding":")") << QByteArray("\"}");
    }
}

void TestEndpointContent::sixtyFourMebibytes()
{
    QFETCH(int, operation);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, behind);
    const EndpointOperation &tried = operationAt(operation);
    const QByteArray body = before + QByteArray(64 * mebibyte - before.size() - behind.size(), 'f') + behind;
    answerOnce(tried, body);
    // Padding is ignored, unless the answer is saved or shown as a whole.
    const bool padded = !before.isEmpty() && tried.decoding != Decoding::Bytes;
    EndpointOutcome outcome = expectedOutcome(tried, false, padded ? bareObject : body);
    if (padded && outcome.status == QLatin1StringView(bareObject) && outcome.level == 1)
        outcome.status = QString::fromLatin1(body.left(240));
    QCOMPARE(m_fixture->state().status(), outcome.status);
    QCOMPARE(m_fixture->state().statusOK(), outcome.level);
    checkLoosely(tried);
    if (!QTest::currentTestFailed())
        checkNextGoodOne(tried);
}

void TestEndpointContent::sixtyFourMebibytesOfFile()
{
    const EndpointOperation &patch = operationNamed("applyPatchToBin");
    answerOnce(patch, R"({"file_data":")" + QByteArray(64 * mebibyte, 'f') + "\"}");
    QCOMPARE(m_fixture->state().status(), u"Patch applied."_s);
    QCOMPARE(QFileInfo(savedPath(patch)).size(), 48 * mebibyte);
    checkLoosely(patch);
    if (!QTest::currentTestFailed())
        checkNextGoodOne(patch);
}

KVTEDITOR_TEST_MAIN(TestEndpointContent)
#include "tst_EndpointContent.moc"
