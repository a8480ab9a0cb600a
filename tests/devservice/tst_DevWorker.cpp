#include "SampleData.h"
#include "ServiceTest.h"
#include "support/TestMain.h"

#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

SampleModule module(const QString &title, const QList<SampleSegment> &segments)
{
    return {title, u"1GCRKSE08FZ000001"_s, u"SN1"_s, u"12654321"_s, {}, segments};
}

SampleTune smallTune()
{
    return {u"2015"_s,
            u"3.9"_s,
            u"18"_s,
            {module(u"Engine"_s, {{u"Fuel"_s, "abcd"}, {u"Spark"_s, QByteArray("\0\n", 2)}}),
             module(u"Gearbox"_s, {{u"Shift"_s, "xyz"}})}};
}

const QByteArray smallBin("abcd\0\nxyz", 9);
const QByteArray rawBin("\x7f raw\0bytes", 11);

QByteArray container(const SampleTune &tune = smallTune())
{
    return SampleContainer::write(tune);
}

const QByteArray fiveModules = container(SampleData::tune(5, 3));
const QByteArray donor = container(SampleData::tune(1, 4));

} // namespace

/// What the worker makes of files: their identifiers, conversions and swaps.
class TestDevWorker : public ServiceTest
{
    Q_OBJECT

private slots:
    void infoOfWhatWasReallySent();
    void secondModuleFillsTheSecondKeys();
    void answersBin_data();
    void answersBin();
    void binOfASampleFileIsNoJson();
    void ctzBecomesTheSameTune();
    void importWithoutBase();
    void importIntoBase_data();
    void importIntoBase();
    void headerAndExportComeBackInTheArchive();
    void definition_data();
    void definition();
    void previewListsCandidates();
    void previewWithoutAFit();
    void swapMovesTheChosenSegments();
    void swapOfNothingIsTheBase();
    void refuses_data();
    void refuses();
};

void TestDevWorker::infoOfWhatWasReallySent()
{
    SampleTune tune = SampleData::tune(1, 7);
    // As a hex editor leaves it.
    tune.modules.first().vin = u"2FTRX18W1XCA01212"_s;
    const SampleModule &module = tune.modules.first();
    QJsonArray rows;
    for (const SampleRow &row : module.rows)
        rows.append(QJsonObject{{u"label"_s, row.label}, {u"value"_s, row.value}});
    QCOMPARE(rows.size(), 6);
    QVERIFY(!module.rows[4].value.isEmpty());
    QCOMPARE(askWorker("kvt_info", {{"file", container(tune)}}).json(),
             QJsonObject({{u"status"_s, u"ok"_s},
                          {u"created"_s, tune.created},
                          {u"softwareVersion"_s, tune.softwareVersion},
                          {u"interfaceCalId"_s, tune.interfaceCalId},
                          {u"vin1"_s, u"2FTRX18W1XCA01212"_s},
                          {u"vin2"_s, QString()},
                          {u"serial1"_s, module.serial},
                          {u"serial2"_s, QString()},
                          {u"mainOs"_s, module.mainOs},
                          {u"gmSystem"_s, module.rows[0].value},
                          {u"gmFuel"_s, module.rows[1].value},
                          {u"gmSpeedometer"_s, module.rows[2].value},
                          {u"gmEngineDiag"_s, module.rows[3].value},
                          {u"gmEngineOp"_s, module.rows[4].value},
                          {u"modules"_s,
                           QJsonArray{QJsonObject{{u"title"_s, module.title},
                                                  {u"vin"_s, module.vin},
                                                  {u"serial"_s, module.serial},
                                                  {u"mainOs"_s, module.mainOs},
                                                  {u"rows"_s, rows}}}}}));
}

void TestDevWorker::secondModuleFillsTheSecondKeys()
{
    SampleTune tune = SampleData::tune(5, 3);
    tune.modules[1].vin = u"SECOND"_s;
    const QJsonObject json = askWorker("kvt_info", {{"file", container(tune)}}).json();
    QCOMPARE(json.value("vin2"_L1).toString(), u"SECOND"_s);
    QCOMPARE(json.value("serial2"_L1).toString(), tune.modules[1].serial);
    QCOMPARE(json.value("modules"_L1).toArray().size(), 5);
}

void TestDevWorker::answersBin_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("bin");
    const auto row = [](const char *name, const Fields &fields, const QByteArray &file,
                        const QByteArray &bin) { QTest::newRow(name) << fields << file << bin; };
    row("convert_kvt2bin", {}, container(), smallBin);
    row("convert_ctz2bin", {}, container(), smallBin);
    row("convert_kvt2efi_live_bin", {}, container(), smallBin);
    row("convert_vbf2bin:0", {{"vbf_skip_verify", "0"}}, container(), smallBin);
    row("convert_vbf2bin:raw", {{"vbf_skip_verify", "1"}}, rawBin, rawBin);
    for (const QByteArray mode : {"kvt", "efi", "bench", "flat", "allseg"})
        row("convert_xcal2bin:" + mode, {{"xcal_mode", mode}}, container(), smallBin);
    row("convert_xcal2bin:raw", {{"xcal_mode", "flat"}}, rawBin, rawBin);
}

/// The operation that a row is named by.
QByteArray operationOfRow()
{
    return QByteArray(QTest::currentDataTag()).split(':').first();
}

void TestDevWorker::answersBin()
{
    QFETCH(Fields, fields);
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, bin);
    const Outcome outcome = askWorker(operationOfRow(), {{"file", file}}, fields);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.contentType, "application/octet-stream");
    QCOMPARE(outcome.body, bin);
}

void TestDevWorker::binOfASampleFileIsNoJson()
{
    const std::pair<int, int> modulesAndSeeds[] = {{1, 1}, {2, 2}, {5, 3}, {1, 4}, {1, 5}};
    for (const auto &[modules, seed] : modulesAndSeeds) {
        const QByteArray file = container(SampleData::tune(modules, seed));
        const QByteArray bin = askWorker("convert_kvt2bin", {{"file", file}}).body;
        QCOMPARE(bin.size(), modules * 3200);
        // The editor takes an answer that begins with a brace for JSON.
        QVERIFY(!bin.startsWith('{'));
    }
}

void TestDevWorker::ctzBecomesTheSameTune()
{
    const QByteArray file = container(SampleData::tune(1, 5));
    QCOMPARE(askWorker("convert_ctz2kvt", {{"file", file}}).body, file);
}

void TestDevWorker::importWithoutBase()
{
    const Outcome outcome = askWorker("convert_bin2kvt_import", {{"file", rawBin}});
    const std::optional<SampleTune> tune = SampleContainer::read(outcome.body);
    QVERIFY(tune);
    QCOMPARE(tune->modules.size(), 1);
    const SampleModule &imported = tune->modules.first();
    QVERIFY(imported.segments == QList<SampleSegment>({{u"Flash"_s, rawBin}}));
    QCOMPARE(imported.title, u"Imported module"_s);
    QCOMPARE(imported.vin.size(), 17);
    QVERIFY(!imported.mainOs.isEmpty());
}

void TestDevWorker::importIntoBase_data()
{
    QTest::addColumn<QByteArray>("bin");
    QTest::addColumn<QByteArrayList>("segments");
    const QByteArray spark("\0\n", 2);
    QTest::newRow("fits") << QByteArray("123456789") << QByteArrayList{"1234", "56", "789"};
    QTest::newRow("ends-within-a-segment") << QByteArray("12345") << QByteArrayList{"1234", "5\n", "xyz"};
    QTest::newRow("ends-with-a-segment") << QByteArray("1234") << QByteArrayList{"1234", spark, "xyz"};
    QTest::newRow("longer") << QByteArray("123456789and more") << QByteArrayList{"1234", "56", "789"};
}

void TestDevWorker::importIntoBase()
{
    QFETCH(QByteArray, bin);
    QFETCH(QByteArrayList, segments);
    const Outcome outcome = askWorker("convert_bin2kvt_import", {{"file", bin}, {"import", container()}});
    SampleTune expected = smallTune();
    expected.modules[0].segments[0].bytes = segments[0];
    expected.modules[0].segments[1].bytes = segments[1];
    expected.modules[1].segments[0].bytes = segments[2];
    QCOMPARE(outcome.body, container(expected));
}

void TestDevWorker::headerAndExportComeBackInTheArchive()
{
    const QByteArray imported =
        askWorker("convert_cm2450_bin2kvt", {{"file", "head"}, {"header", "head"}, {"export", "the export"}})
            .body;
    const std::optional<SampleTune> tune = SampleContainer::read(imported);
    QVERIFY(tune);
    QCOMPARE(tune->modules.first().title, u"CM2450 module"_s);
    const QList<SampleSegment> segments = {{u"Header"_s, "head"}, {u"Export"_s, "the export"}};
    QVERIFY(tune->modules.first().segments == segments);

    const QByteArray zip = askWorker("convert_cm2450_kvt2bin", {{"file", imported}}).body;
    QVERIFY(zip.startsWith("PK\x03\x04"));
    QVERIFY(zip.contains("header.binhead"));
    QVERIFY(zip.contains("export.binthe export"));
    // The first segment is the header, all that follow are the export.
    const QByteArray several = askWorker("convert_cm2450_kvt2bin", {{"file", container()}}).body;
    QVERIFY(several.contains("header.binabcd"));
    QVERIFY(several.contains(QByteArray("export.bin\0\nxyz", 15)));
}

void TestDevWorker::definition_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("tables");
    QTest::newRow("container") << container() << u"Engine"_s
                               << QStringList({u"Fuel 0 4"_s, u"Spark 4 2"_s, u"Shift 6 3"_s});
    QTest::newRow("raw") << rawBin << u"Imported module"_s << QStringList(u"Flash 0 11"_s);
}

void TestDevWorker::definition()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, title);
    QFETCH(QStringList, tables);
    QXmlStreamReader reader(askWorker("convert_ecfg2xdf", {{"file", file}}).body);
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.name(), u"sampledefinition"_s);
    QCOMPARE(reader.attributes().value("title"_L1), title);
    QStringList found;
    while (reader.readNextStartElement()) {
        const QXmlStreamAttributes table = reader.attributes();
        found.append(
            u"%1 %2 %3"_s.arg(table.value("name"_L1), table.value("offset"_L1), table.value("size"_L1)));
        reader.skipCurrentElement();
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(found, tables);
}

void TestDevWorker::previewListsCandidates()
{
    QJsonObject preview = askWorker("segment_swap_preview", {{"file", fiveModules}, {"donor", donor}}).json();
    const QJsonArray candidates = preview.take("candidates"_L1).toArray();
    QCOMPARE(preview, askWorker("kvt_info", {{"file", fiveModules}}).json());
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

void TestDevWorker::previewWithoutAFit()
{
    const QJsonObject json =
        askWorker("segment_swap_preview", {{"file", fiveModules}, {"donor", container()}}).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("candidates"_L1), QJsonValue(QJsonArray()));
}

void TestDevWorker::swapMovesTheChosenSegments()
{
    SampleTune expected = SampleData::tune(1, 1);
    const QByteArray base = container(expected);
    const QList<SampleSegment> donated = SampleData::tune(1, 4).modules.first().segments;
    for (const qsizetype i : {0, 2, 4})
        expected.modules.first().segments[i] = donated[i];
    const Outcome outcome =
        askWorker("segment_swap", {{"file", base}, {"donor", donor}}, {{"swap_candidate_indices", "0,2,4"}});
    QCOMPARE(outcome.contentType, "application/octet-stream");
    QCOMPARE(outcome.body, container(expected));
    QVERIFY(outcome.body != base);
}

void TestDevWorker::swapOfNothingIsTheBase()
{
    QCOMPARE(
        askWorker("segment_swap", {{"file", fiveModules}, {"donor", donor}}, {{"swap_candidate_indices", ""}})
            .body,
        fiveModules);
}

void TestDevWorker::refuses_data()
{
    QTest::addColumn<QList<FilePart>>("files");
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QList<FilePart> &files, const Fields &fields,
                        const char *error) {
        QTest::newRow(name) << files << fields << QString::fromLatin1(error);
    };
    const QList<FilePart> raw = {{"file", rawBin}};
    const QList<FilePart> empty = {{"file", container({u"2015"_s, {}, {}, {module(u"Engine"_s, {})}})}};
    const char *const noContainer = "Not a sample container at byte 0";
    row("kvt_info:no-container", raw, {}, noContainer);
    row("kvt_info:no-file", {}, {}, "No file");
    row("kvt_info:empty-file", {{"file", ""}}, {}, "No file");
    row(":no-operation", raw, {}, "No operation");
    row("make_tea", raw, {}, "Operation not supported: make_tea");
    row("convert_kvt2bin:raw", raw, {}, noContainer);
    row("convert_ctz2bin:raw", raw, {}, noContainer);
    row("convert_kvt2efi_live_bin:raw", raw, {}, noContainer);
    row("convert_ctz2kvt:raw", raw, {}, noContainer);
    row("convert_cm2450_kvt2bin:raw", raw, {}, noContainer);
    row("convert_kvt2bin:no-segments", empty, {}, "The file has no segments");
    row("convert_cm2450_kvt2bin:no-segments", empty, {}, "The file has no segments");
    row("convert_bin2kvt_import:raw-base", {{"file", "x"}, {"import", rawBin}}, {},
        "Base: Not a sample container at byte 0");
    row("convert_bin2kvt_import:empty-base", {{"file", "x"}, {"import", ""}}, {},
        "Base: Not a sample container at byte 0");
    row("convert_cm2450_bin2kvt:no-header", {{"file", "h"}, {"export", "e"}}, {}, "No header");
    row("convert_cm2450_bin2kvt:empty-export", {{"file", "h"}, {"header", "h"}, {"export", ""}}, {},
        "No export");
    row("convert_vbf2bin:no-option", raw, {}, "No vbf_skip_verify");
    row("convert_vbf2bin:other-option", raw, {{"vbf_skip_verify", "true"}}, "Unknown vbf_skip_verify: true");
    row("convert_xcal2bin:other-option", raw, {{"xcal_mode", "KVT"}}, "Unknown xcal_mode: KVT");
    const FilePart base = {"file", fiveModules};
    row("segment_swap_preview:no-donor", {base}, {}, "No donor");
    row("segment_swap_preview:empty-donor", {base, {"donor", ""}}, {}, "No donor");
    row("segment_swap_preview:raw-base", {{"file", rawBin}, {"donor", donor}}, {},
        "Base: Not a sample container at byte 0");
    row("segment_swap:raw-donor", {base, {"donor", rawBin}}, {}, "Donor: Not a sample container at byte 0");
    row("segment_swap:no-places", {base, {"donor", donor}}, {}, "No swap_candidate_indices");
    row("segment_swap:wrong-place", {base, {"donor", donor}}, {{"swap_candidate_indices", "25"}},
        "No such swap candidate: 25");
}

void TestDevWorker::refuses()
{
    QFETCH(QList<FilePart>, files);
    QFETCH(Fields, fields);
    QFETCH(QString, error);
    const Outcome outcome = askWorker(operationOfRow(), files, fields);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.json(),
             QJsonObject({{u"status"_s, u"error"_s}, {u"message"_s, error}, {u"error"_s, error}}));
    const Outcome versionless =
        postForm(url(u"kvt_worker/process.aspx"_s), {{"operation", operationOfRow()}}, files);
    QCOMPARE(versionless.refusal(), u"No version"_s);
}

KVTEDITOR_TEST_MAIN(TestDevWorker)
#include "tst_DevWorker.moc"
