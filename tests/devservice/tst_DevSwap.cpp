#include "DevService.h"
#include "Exchange.h"
#include "SampleData.h"
#include "support/TestMain.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

const QByteArray noContainer = "MZ";

QByteArray fiveModules()
{
    return SampleContainer::write(SampleData::tune(5, 3));
}

QByteArray donor()
{
    return SampleContainer::write(SampleData::tune(1, 4));
}

} // namespace

class TestDevSwap : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void previewListsCandidates();
    void previewCarriesTheBasesIdentifiers();
    void previewWithoutAFit();
    void swapMovesTheChosenSegments();
    void swapOfNothingIsTheBase();
    void refuses_data();
    void refuses();

private:
    Outcome ask(const QByteArray &operation, const QList<FilePart> &files, const Fields &fields = {});

    std::unique_ptr<DevService> m_service;
};

void TestDevSwap::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevSwap::cleanup()
{
    m_service.reset();
}

Outcome TestDevSwap::ask(const QByteArray &operation, const QList<FilePart> &files, const Fields &fields)
{
    return postParts(m_service->apiBase() + "kvt_worker/process.aspx"_L1,
                     Fields{{"operation", operation}, {"version", "4.0.2"}} + fields, files);
}

void TestDevSwap::previewListsCandidates()
{
    const QJsonObject json =
        ask("segment_swap_preview", {{"file", fiveModules()}, {"donor", donor()}}).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    const QJsonArray candidates = json.value("candidates"_L1).toArray();
    QCOMPARE(candidates.size(), 25);
    QCOMPARE(candidates[7].toObject(),
             QJsonObject({{u"targetIndex"_s, 7},
                          {u"donorIndex"_s, 2},
                          {u"name"_s, u"Spark"_s},
                          {u"size"_s, 768},
                          {u"label"_s, u"Transmission control module: Spark (768 bytes)"_s}}));
    for (qsizetype i = 0; i < candidates.size(); ++i)
        QCOMPARE(candidates[i].toObject().contains("label"_L1), i != 24);
}

void TestDevSwap::previewCarriesTheBasesIdentifiers()
{
    const QJsonObject info = ask("kvt_info", {{"file", fiveModules()}}).json();
    QJsonObject preview = ask("segment_swap_preview", {{"file", fiveModules()}, {"donor", donor()}}).json();
    preview.remove("candidates"_L1);
    QVERIFY(!info.value("vin1"_L1).toString().isEmpty());
    QCOMPARE(preview, info);
}

void TestDevSwap::previewWithoutAFit()
{
    SampleTune other = SampleData::tune(1, 4);
    other.modules.first().segments = {{u"Other"_s, "x"}};
    const QJsonObject json =
        ask("segment_swap_preview", {{"file", fiveModules()}, {"donor", SampleContainer::write(other)}})
            .json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QVERIFY(json.value("candidates"_L1).isArray());
    QCOMPARE(json.value("candidates"_L1).toArray().size(), 0);
}

void TestDevSwap::swapMovesTheChosenSegments()
{
    SampleTune expected = SampleData::tune(1, 1);
    const QList<SampleSegment> donated = SampleData::tune(1, 4).modules.first().segments;
    for (const qsizetype i : {0, 2, 4})
        expected.modules.first().segments[i] = donated[i];
    const Outcome outcome =
        ask("segment_swap", {{"file", SampleContainer::write(SampleData::tune(1, 1))}, {"donor", donor()}},
            {{"swap_candidate_indices", "0,2,4"}});
    QCOMPARE(outcome.contentType, "application/octet-stream");
    QCOMPARE(outcome.body, SampleContainer::write(expected));
    QVERIFY(outcome.body != SampleContainer::write(SampleData::tune(1, 1)));
}

void TestDevSwap::swapOfNothingIsTheBase()
{
    const Outcome outcome =
        ask("segment_swap", {{"file", fiveModules()}, {"donor", donor()}}, {{"swap_candidate_indices", ""}});
    QCOMPARE(outcome.body, fiveModules());
}

void TestDevSwap::refuses_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QList<FilePart>>("files");
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QString>("message");
    const FilePart base = {"file", fiveModules()};
    const FilePart fromDonor = {"donor", donor()};
    const Fields places = {{"swap_candidate_indices", "0"}};
    for (const char *operation : {"segment_swap_preview", "segment_swap"}) {
        const auto row = [operation, &places](const char *name, const QList<FilePart> &files,
                                              const QString &message) {
            QTest::newRow(qPrintable(u"%1:%2"_s.arg(QLatin1StringView(operation), QLatin1StringView(name))))
                << QByteArray(operation) << files << places << message;
        };
        row("no-base", {fromDonor}, u"No file"_s);
        row("no-donor", {base}, u"No donor"_s);
        row("empty-donor", {base, {"donor", ""}}, u"No donor"_s);
        row("base-no-container", {{"file", noContainer}, fromDonor},
            u"Base: Not a sample container at byte 0"_s);
        row("donor-no-container", {base, {"donor", noContainer}},
            u"Donor: Not a sample container at byte 0"_s);
    }
    const QList<FilePart> files = {base, fromDonor};
    QTest::newRow("no-places") << QByteArray("segment_swap") << files << Fields{}
                               << u"No swap_candidate_indices"_s;
    for (const char *wrong : {"25", "-1", "x", "0,", "0;1"})
        QTest::newRow(qPrintable(u"place:%1"_s.arg(QLatin1StringView(wrong))))
            << QByteArray("segment_swap") << files << Fields{{"swap_candidate_indices", wrong}}
            << u"No such swap candidate: %1"_s.arg(QLatin1StringView(wrong));
}

void TestDevSwap::refuses()
{
    QFETCH(QByteArray, operation);
    QFETCH(QList<FilePart>, files);
    QFETCH(Fields, fields);
    QFETCH(QString, message);
    const Outcome outcome = ask(operation, files, fields);
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"error"_s);
    QCOMPARE(outcome.json().value("message"_L1).toString(), message);
}

KVTEDITOR_TEST_MAIN(TestDevSwap)
#include "tst_DevSwap.moc"
