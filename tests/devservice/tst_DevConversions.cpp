#include "DevService.h"
#include "Exchange.h"
#include "SampleData.h"
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

QByteArray emptyContainer()
{
    return container({u"2015"_s, u"3.9"_s, u"18"_s, {module(u"Engine"_s, {})}});
}

} // namespace

class TestDevConversions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void answersBin_data();
    void answersBin();
    void binOfASampleFileIsNoJson_data();
    void binOfASampleFileIsNoJson();
    void ctzBecomesTheSameTune();
    void importWithoutBase();
    void importIntoBase_data();
    void importIntoBase();
    void headerAndExportComeBackInTheArchive();
    void archiveOfSeveralModules();
    void definition_data();
    void definition();
    void refuses_data();
    void refuses();

private:
    Outcome convert(const QByteArray &operation, const QList<FilePart> &files, const Fields &fields = {});

    std::unique_ptr<DevService> m_service;
};

void TestDevConversions::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void TestDevConversions::cleanup()
{
    m_service.reset();
}

Outcome TestDevConversions::convert(const QByteArray &operation, const QList<FilePart> &files,
                                    const Fields &fields)
{
    return postParts(m_service->apiBase() + "kvt_worker/process.aspx"_L1,
                     Fields{{"operation", operation}, {"version", "4.0.2"}} + fields, files);
}

void TestDevConversions::answersBin_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("bin");
    const auto row = [](const char *name, const Fields &fields, const QByteArray &file,
                        const QByteArray &bin) {
        QTest::newRow(name) << QByteArray(name).split(':').first() << fields << file << bin;
    };
    row("convert_kvt2bin", {}, container(), smallBin);
    row("convert_ctz2bin", {}, container(), smallBin);
    row("convert_kvt2efi_live_bin", {}, container(), smallBin);
    for (const char *value : {"0", "1"}) {
        const Fields fields = {{"vbf_skip_verify", value}};
        row(qPrintable(u"convert_vbf2bin:%1-container"_s.arg(QLatin1StringView(value))), fields, container(),
            smallBin);
        row(qPrintable(u"convert_vbf2bin:%1-raw"_s.arg(QLatin1StringView(value))), fields, rawBin, rawBin);
    }
    for (const char *mode : {"kvt", "efi", "bench", "flat", "allseg"}) {
        const Fields fields = {{"xcal_mode", mode}};
        row(qPrintable(u"convert_xcal2bin:%1-container"_s.arg(QLatin1StringView(mode))), fields, container(),
            smallBin);
        row(qPrintable(u"convert_xcal2bin:%1-raw"_s.arg(QLatin1StringView(mode))), fields, rawBin, rawBin);
    }
}

void TestDevConversions::answersBin()
{
    QFETCH(QByteArray, operation);
    QFETCH(Fields, fields);
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, bin);
    const Outcome outcome = convert(operation, {{"file", file}}, fields);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.contentType, "application/octet-stream");
    QCOMPARE(outcome.body, bin);
}

void TestDevConversions::binOfASampleFileIsNoJson_data()
{
    QTest::addColumn<int>("modules");
    QTest::addColumn<int>("seed");
    QTest::newRow("one-module.kvt") << 1 << 1;
    QTest::newRow("two-modules.kvt") << 2 << 2;
    QTest::newRow("five-modules.kvt") << 5 << 3;
    QTest::newRow("donor.kvt") << 1 << 4;
    QTest::newRow("one-module.ctz") << 1 << 5;
}

void TestDevConversions::binOfASampleFileIsNoJson()
{
    QFETCH(int, modules);
    QFETCH(int, seed);
    const Outcome outcome =
        convert("convert_kvt2bin", {{"file", container(SampleData::tune(modules, seed))}});
    QCOMPARE(outcome.body.size(), modules * 3200);
    // The editor takes an answer that begins with a brace for JSON.
    QVERIFY(!outcome.body.startsWith('{'));
}

void TestDevConversions::ctzBecomesTheSameTune()
{
    const SampleTune tune = SampleData::tune(1, 5);
    const Outcome outcome = convert("convert_ctz2kvt", {{"file", container(tune)}});
    QCOMPARE(outcome.body, container(tune));
    const Outcome info = convert("kvt_info", {{"file", outcome.body}});
    QCOMPARE(info.json().value("mainOs"_L1).toString(), tune.modules.first().mainOs);
}

void TestDevConversions::importWithoutBase()
{
    const Outcome outcome = convert("convert_bin2kvt_import", {{"file", rawBin}});
    const std::optional<SampleTune> tune = SampleContainer::read(outcome.body);
    QVERIFY(tune);
    QCOMPARE(tune->modules.size(), 1);
    const QList<SampleSegment> segments = {{u"Flash"_s, rawBin}};
    QVERIFY(tune->modules.first().segments == segments);
    const QJsonObject info = convert("kvt_info", {{"file", outcome.body}}).json();
    QCOMPARE(info.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(info.value("modules"_L1)[0]["title"_L1].toString(), u"Imported module"_s);
    QCOMPARE(info.value("vin1"_L1).toString().size(), 17);
    QVERIFY(!info.value("mainOs"_L1).toString().isEmpty());
}

void TestDevConversions::importIntoBase_data()
{
    QTest::addColumn<QByteArray>("bin");
    QTest::addColumn<QByteArrayList>("segments");
    QTest::newRow("fits") << QByteArray("123456789") << QByteArrayList{"1234", "56", "789"};
    QTest::newRow("ends-within-a-segment")
        << QByteArray("12345") << QByteArrayList{"1234", QByteArray("5\n"), "xyz"};
    QTest::newRow("ends-with-a-segment")
        << QByteArray("1234") << QByteArrayList{"1234", QByteArray("\0\n", 2), "xyz"};
    QTest::newRow("longer") << QByteArray("123456789and more") << QByteArrayList{"1234", "56", "789"};
}

void TestDevConversions::importIntoBase()
{
    QFETCH(QByteArray, bin);
    QFETCH(QByteArrayList, segments);
    const Outcome outcome = convert("convert_bin2kvt_import", {{"file", bin}, {"import", container()}});
    SampleTune expected = smallTune();
    expected.modules[0].segments[0].bytes = segments[0];
    expected.modules[0].segments[1].bytes = segments[1];
    expected.modules[1].segments[0].bytes = segments[2];
    QCOMPARE(outcome.body, container(expected));
}

void TestDevConversions::headerAndExportComeBackInTheArchive()
{
    const Outcome imported =
        convert("convert_cm2450_bin2kvt", {{"file", "head"}, {"header", "head"}, {"export", "the export"}});
    const std::optional<SampleTune> tune = SampleContainer::read(imported.body);
    QVERIFY(tune);
    const QList<SampleSegment> segments = {{u"Header"_s, "head"}, {u"Export"_s, "the export"}};
    QVERIFY(tune->modules.first().segments == segments);
    const QJsonObject info = convert("kvt_info", {{"file", imported.body}}).json();
    QCOMPARE(info.value("modules"_L1)[0]["title"_L1].toString(), u"CM2450 module"_s);

    const QByteArray zip = convert("convert_cm2450_kvt2bin", {{"file", imported.body}}).body;
    QVERIFY(zip.startsWith("PK\x03\x04"));
    QVERIFY(zip.contains("header.binhead"));
    QVERIFY(zip.contains("export.binthe export"));
    QCOMPARE(zip.indexOf("PK\x05\x06"), zip.size() - 22);
}

void TestDevConversions::archiveOfSeveralModules()
{
    const QByteArray zip = convert("convert_cm2450_kvt2bin", {{"file", container()}}).body;
    QVERIFY(zip.contains("header.binabcd"));
    QVERIFY(zip.contains(QByteArray("export.bin\0\nxyz", 15)));
}

void TestDevConversions::definition_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("tables");
    QTest::newRow("container") << container() << u"Engine"_s
                               << QStringList({u"Fuel 0 4"_s, u"Spark 4 2"_s, u"Shift 6 3"_s});
    QTest::newRow("raw") << rawBin << u"Imported module"_s << QStringList(u"Flash 0 11"_s);
}

void TestDevConversions::definition()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, title);
    QFETCH(QStringList, tables);
    QXmlStreamReader reader(convert("convert_ecfg2xdf", {{"file", file}}).body);
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

void TestDevConversions::refuses_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<QList<FilePart>>("files");
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, const QList<FilePart> &files, const Fields &fields,
                        const char *message) {
        QTest::newRow(name) << QByteArray(name).split(':').first() << files << fields
                            << QString::fromLatin1(message);
    };
    const QList<FilePart> raw = {{"file", rawBin}};
    const char *const noContainer = "Not a sample container at byte 0";
    row("convert_kvt2bin:raw", raw, {}, noContainer);
    row("convert_ctz2bin:raw", raw, {}, noContainer);
    row("convert_kvt2efi_live_bin:raw", raw, {}, noContainer);
    row("convert_ctz2kvt:raw", raw, {}, noContainer);
    row("convert_cm2450_kvt2bin:raw", raw, {}, noContainer);
    row("convert_kvt2bin:no-file", {}, {}, "No file");
    const char *const noSegments = "The file has no segments";
    row("convert_kvt2bin:no-segments", {{"file", emptyContainer()}}, {}, noSegments);
    row("convert_cm2450_kvt2bin:no-segments", {{"file", emptyContainer()}}, {}, noSegments);
    row("convert_bin2kvt_import:raw-base", {{"file", rawBin}, {"import", rawBin}}, {},
        "Base: Not a sample container at byte 0");
    row("convert_bin2kvt_import:empty-base", {{"file", rawBin}, {"import", ""}}, {},
        "Base: Not a sample container at byte 0");
    row("convert_cm2450_bin2kvt:no-header", {{"file", "h"}, {"export", "e"}}, {}, "No header");
    row("convert_cm2450_bin2kvt:no-export", {{"file", "h"}, {"header", "h"}}, {}, "No export");
    row("convert_cm2450_bin2kvt:empty-export", {{"file", "h"}, {"header", "h"}, {"export", ""}}, {},
        "No export");
    row("convert_vbf2bin:no-option", raw, {}, "No vbf_skip_verify");
    row("convert_vbf2bin:other-option", raw, {{"vbf_skip_verify", "true"}}, "Unknown vbf_skip_verify: true");
    row("convert_xcal2bin:no-option", raw, {}, "No xcal_mode");
    row("convert_xcal2bin:other-option", raw, {{"xcal_mode", "KVT"}}, "Unknown xcal_mode: KVT");
}

void TestDevConversions::refuses()
{
    QFETCH(QByteArray, operation);
    QFETCH(QList<FilePart>, files);
    QFETCH(Fields, fields);
    QFETCH(QString, message);
    const Outcome outcome = convert(operation, files, fields);
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"error"_s);
    QCOMPARE(outcome.json().value("message"_L1).toString(), message);
}

KVTEDITOR_TEST_MAIN(TestDevConversions)
#include "tst_DevConversions.moc"
