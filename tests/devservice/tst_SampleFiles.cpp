#include "SampleData.h"
#include "StoredZip.h"
#include "SwapRules.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryFile>

using namespace Qt::StringLiterals;

namespace {

SampleModule module(const QString &title, const QList<SampleSegment> &segments)
{
    return {title, {}, {}, {}, {}, segments};
}

SampleTune tuneOf(const QList<SampleModule> &modules)
{
    return {u"2015"_s, u"3.9"_s, u"18"_s, modules};
}

SampleTune smallTune()
{
    return tuneOf({{u"Engine"_s,
                    u"1GCRKSE00FZ000001"_s,
                    u"SN1"_s,
                    u"12654321"_s,
                    {{u"System"_s, u"E38"_s}, {u"Equation"_s, u"a=b=c"_s}, {u"Empty"_s, QString()}},
                    {{u"Fuel"_s, QByteArray("\n\0end\n\xff", 7)}, {u"None"_s, QByteArray()}}}});
}

QMap<QString, QByteArray> filesIn(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator walk(folder, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        files.insert(QDir(folder).relativeFilePath(path), contentOf(path));
    }
    return files;
}

using Pairs = QList<std::pair<int, int>>;

} // namespace

/// The sample container, the files that are made of it, and what swaps and archives make of those.
class TestSampleFiles : public QObject
{
    Q_OBJECT

private slots:
    void layoutIsAsDocumented();
    void whatIsWrittenReadsBack_data();
    void whatIsWrittenReadsBack();
    void segmentOffsetsFindTheBytes();
    void hostileTextsAreMadeHarmless();
    void hostileBytesAreRefused_data();
    void hostileBytesAreRefused();
    void everyCutIsRefused();

    void vinHasRightCheckDigit();
    void generatedFiles();
    void unwritableFolderIsReported();

    void candidates_data();
    void candidates();
    void chosen_data();
    void chosen();
    void swappedChangesTheChosenBytesOnly();

    void archive();
};

void TestSampleFiles::layoutIsAsDocumented()
{
    const SampleTune tune = tuneOf(
        {{u"Engine"_s, u"1GCRKSE00FZ000001"_s, u"S"_s, u"12"_s, {{u"L"_s, u"V"_s}}, {{u"F"_s, "ab"}}}});
    const QByteArray expected = "KVTSAMPLE1\n"
                                "created     2015                \n"
                                "software    3.9                 \n"
                                "interface   18                  \n"
                                "module      Engine                  \n"
                                "vin         1GCRKSE00FZ000001\n"
                                "serial      S                   \n"
                                "mainos      12                      \n"
                                "row         L=V                                             \n"
                                "segment     F=00000002\n"
                                "ab\n"
                                "end\n";
    QCOMPARE(SampleContainer::write(tune), expected);
}

void TestSampleFiles::whatIsWrittenReadsBack_data()
{
    QTest::addColumn<SampleTune>("tune");
    QTest::newRow("no-module") << SampleTune{};
    QTest::newRow("one-module") << smallTune();
    SampleTune two = smallTune();
    two.modules.append(SampleModule{u"Getriebe \u00e9"_s, {}, {}, u"50123456AB"_s, {}, {}});
    QTest::newRow("two-modules") << two;
    SampleTune large = smallTune();
    large.modules[0].segments.append({u"Large"_s, QByteArray(5'000'000, '\n')});
    QTest::newRow("large-segment-of-newlines") << large;
}

void TestSampleFiles::whatIsWrittenReadsBack()
{
    QFETCH(SampleTune, tune);
    QString error;
    const std::optional<SampleTune> read = SampleContainer::read(SampleContainer::write(tune), &error);
    QVERIFY2(read, qPrintable(error));
    QVERIFY(*read == tune);
    QCOMPARE(error, QString());
}

void TestSampleFiles::segmentOffsetsFindTheBytes()
{
    SampleTune tune = smallTune();
    tune.modules.append(module(u"Gearbox"_s, {{u"Shift"_s, "xyz"}}));
    const QByteArray bytes = SampleContainer::write(tune);
    const QList<qsizetype> offsets = SampleContainer::segmentOffsets(bytes);
    QCOMPARE(offsets.size(), 3);
    QCOMPARE(bytes.mid(offsets[0], 7), QByteArray("\n\0end\n\xff", 7));
    QVERIFY(bytes.first(offsets[1]).endsWith("None=00000000\n"));
    QCOMPARE(bytes.mid(offsets[2]), "xyz\nend\n");
    QCOMPARE(SampleContainer::segmentOffsets(bytes.chopped(1)), QList<qsizetype>());
}

void TestSampleFiles::hostileTextsAreMadeHarmless()
{
    SampleTune tune = tuneOf({module(u"M"_s, {{u"s=t"_s, "1"}})});
    tune.created = u"a\nend\r"_s + QChar(u'\0') + u"b"_s;
    tune.modules.first().rows = {{u"x=y"_s, u" v "_s}};
    const std::optional<SampleTune> read = SampleContainer::read(SampleContainer::write(tune));
    QVERIFY(read);
    QCOMPARE(read->created, u"a_end__b"_s);
    QCOMPARE(read->modules.first().rows.first().label, u"x_y"_s);
    QCOMPARE(read->modules.first().rows.first().value, u"v"_s);
    QCOMPARE(read->modules.first().segments.first().name, u"s_t"_s);
}

void TestSampleFiles::hostileBytesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray magic = "KVTSAMPLE1\n";
    const QByteArray segment = magic + "module\nsegment     ";
    const auto row = [](const char *name, const QByteArray &bytes, const char *reason) {
        QTest::newRow(name) << bytes << QString::fromLatin1(reason);
    };
    const char *const cut = "The file is cut short at byte ";
    const char *const noSize = "A segment without a size at byte ";
    const char *const noEnd = "A segment does not end where it says at byte ";
    row("empty", {}, "Not a sample container at byte 0");
    row("magic-of-another-version", "KVTSAMPLE2\nend\n", "Not a sample container at byte 0");
    row("magic-only", magic, cut);
    row("no-newline-for-ever", magic + QByteArray(1'000'000, 'x'), cut);
    row("unknown-line", magic + "module\nwhat        x\nend\n", "An unknown line at byte ");
    row("row-before-module", magic + "row         a=b\nend\n", "A module's line before the first module");
    row("row-without-value", magic + "module\nrow         ab\nend\n", "A row without \"=\" at byte ");
    row("segment-without-size", segment + "F\nab\nend\n", noSize);
    row("segment-size-no-number", segment + "F=xyz\nab\nend\n", noSize);
    row("segment-size-negative", segment + "F=-2\nab\nend\n", noSize);
    row("segment-size-beyond-64-bit", segment + "F=ffffffffffffffff\nab\nend\n", noSize);
    row("segment-size-past-end", segment + "F=ff\nab\nend\n", noEnd);
    row("segment-size-largest", segment + "F=7fffffffffffffff\nab\nend\n", noEnd);
    row("segment-size-too-small", segment + "F=1\nab\nend\n", noEnd);
    row("bytes-after-end", magic + "end\n\n", "Bytes after the end at byte 15");
}

void TestSampleFiles::hostileBytesAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    QString error;
    QVERIFY(!SampleContainer::read(bytes, &error));
    QVERIFY2(error.startsWith(reason), qPrintable(error));
    QVERIFY(!SampleContainer::read(bytes));
}

void TestSampleFiles::everyCutIsRefused()
{
    const QByteArray whole = SampleContainer::write(smallTune());
    for (qsizetype size = 0; size < whole.size(); ++size)
        QVERIFY(!SampleContainer::read(whole.left(size)));
}

void TestSampleFiles::vinHasRightCheckDigit()
{
    QCOMPARE(SampleData::vin(1), u"1GCRKSE08FZ000001"_s);
    QCOMPARE(SampleData::vin(2), u"1GCRKSE0XFZ000002"_s);
    const QRegularExpression form(u"^[A-HJ-NPR-Z0-9]{8}[0-9X][A-HJ-NPR-Z0-9]{8}$"_s);
    for (int i = 0; i < 300; ++i)
        QVERIFY2(form.match(SampleData::vin(i)).hasMatch(), qPrintable(SampleData::vin(i)));
}

void TestSampleFiles::generatedFiles()
{
    const QTemporaryDir folder;
    const QTemporaryDir other;
    QVERIFY(SampleData::generate(folder.path()) && SampleData::generate(other.path()));
    QMap<QString, QByteArray> files = filesIn(folder.path());
    QCOMPARE(filesIn(other.path()), files);
    QCOMPARE(files.take(u"flash.bin"_s).size(), 65536);

    const std::pair<QString, int> named[] = {{u"one-module.kvt"_s, 1},
                                             {u"two-modules.kvt"_s, 2},
                                             {u"five-modules.kvt"_s, 5},
                                             {u"donor.kvt"_s, 1},
                                             {u"one-module.ctz"_s, 1}};
    const QRegularExpression os(u"^([0-9]{7,9}|[0-9]{8}[A-Z]{2})$"_s);
    QStringList firstNumbers;
    for (const auto &[name, modules] : named) {
        const std::optional<SampleTune> tune = SampleContainer::read(files.take(name));
        QVERIFY(tune);
        QCOMPARE(tune->modules.size(), modules);
        firstNumbers.append(tune->modules.first().mainOs);
        for (const SampleModule &module : tune->modules) {
            QCOMPARE(module.vin.size(), 17);
            QVERIFY2(os.match(module.mainOs).hasMatch(), qPrintable(module.mainOs));
            QCOMPARE(module.rows.size(), 6);
            QCOMPARE(module.segments.size(), 5);
        }
    }
    QCOMPARE(firstNumbers, SampleData::mainOsNumbers());

    QCOMPARE(files.size(), 200);
    const QRegularExpression form(
        u"^library/[A-Z]+/20[0-9]{2}/20[0-9]{2}_[A-Z0-9]+_([0-9]{7,8}|[0-9]{8}AB)\\.(kvt|ctz)$"_s);
    int ctz = 0;
    int suffixed = 0;
    for (auto file = files.begin(); file != files.end(); ++file) {
        QVERIFY2(form.match(file.key()).hasMatch(), qPrintable(file.key()));
        const std::optional<SampleTune> tune = SampleContainer::read(file.value());
        QVERIFY(tune);
        QVERIFY(file.key().contains(tune->modules.first().mainOs));
        ctz += file.key().endsWith(".ctz"_L1);
        suffixed += file.key().contains("AB."_L1);
    }
    QCOMPARE(ctz, 29);
    QCOMPARE(suffixed, 67);
}

void TestSampleFiles::unwritableFolderIsReported()
{
    QTemporaryFile inTheWay;
    QVERIFY(inTheWay.open());
    QString error;
    QVERIFY(!SampleData::generate(inTheWay.fileName(), &error));
    QVERIFY2(error.contains(inTheWay.fileName()), qPrintable(error));
    QVERIFY(!SampleData::generate(inTheWay.fileName()));
}

void TestSampleFiles::candidates_data()
{
    QTest::addColumn<SampleTune>("base");
    QTest::addColumn<SampleTune>("donor");
    QTest::addColumn<Pairs>("pairs");
    const SampleTune one = tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}, {u"Spark"_s, "cde"}})});
    QTest::newRow("same-layout") << one << one << Pairs{{0, 0}, {1, 1}};
    QTest::newRow("other-order") << one << tuneOf({module(u"D"_s, {{u"Spark"_s, "123"}, {u"Fuel"_s, "45"}})})
                                 << Pairs{{0, 1}, {1, 0}};
    QTest::newRow("other-size") << one << tuneOf({module(u"D"_s, {{u"Fuel"_s, "123"}, {u"Spark"_s, "456"}})})
                                << Pairs{{1, 1}};
    QTest::newRow("other-name") << one << tuneOf({module(u"D"_s, {{u"fuel"_s, "12"}})}) << Pairs{};
    const SampleTune two = tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}}), module(u"B"_s, {{u"Fuel"_s, "cd"}})});
    QTest::newRow("module-at-the-same-place") << two << two << Pairs{{0, 0}, {1, 1}};
    QTest::newRow("donor-of-one-module")
        << two << tuneOf({module(u"D"_s, {{u"Fuel"_s, "12"}})}) << Pairs{{0, 0}, {1, 0}};
    QTest::newRow("base-of-one-module")
        << tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}})}) << two << Pairs{{0, 0}};
    QTest::newRow("nothing-to-swap") << tuneOf({}) << two << Pairs{};
}

void TestSampleFiles::candidates()
{
    QFETCH(SampleTune, base);
    QFETCH(SampleTune, donor);
    QFETCH(Pairs, pairs);
    Pairs found;
    for (const SwapCandidate &candidate : SwapRules::candidates(base, donor))
        found.append({candidate.targetIndex, candidate.donorIndex});
    QCOMPARE(found, pairs);
}

void TestSampleFiles::chosen_data()
{
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QList<int>>("targets");
    QTest::newRow("") << true << QList<int>();
    QTest::newRow("1") << true << QList<int>{11};
    QTest::newRow("2,0") << true << QList<int>{12, 10};
    for (const char *wrong : {"3", "-1", "x", "0,,1", "0,", "4294967296"})
        QTest::newRow(wrong) << false << QList<int>();
}

void TestSampleFiles::chosen()
{
    QFETCH(bool, valid);
    QFETCH(QList<int>, targets);
    const QList<SwapCandidate> candidates = {{10, 0, {}, 1, {}}, {11, 0, {}, 1, {}}, {12, 0, {}, 1, {}}};
    const std::optional<QList<SwapCandidate>> chosen =
        SwapRules::chosen(candidates, QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(chosen.has_value(), valid);
    QList<int> found;
    for (const SwapCandidate &candidate : chosen.value_or(QList<SwapCandidate>()))
        found.append(candidate.targetIndex);
    QCOMPARE(found, targets);
}

void TestSampleFiles::swappedChangesTheChosenBytesOnly()
{
    const SampleTune base = tuneOf(
        {module(u"A"_s, {{u"Fuel"_s, "ab"}, {u"Spark"_s, "cde"}}), module(u"B"_s, {{u"Fuel"_s, "\n\n"}})});
    const SampleTune donor = tuneOf({module(u"D"_s, {{u"Spark"_s, "123"}, {u"Fuel"_s, "45"}})});
    // Padding in front of a value, as a hex editor may leave it: writing the tune anew would move it.
    QByteArray bytes = SampleContainer::write(base);
    bytes.replace("2015  ", "  2015");
    QByteArray expected = bytes;
    expected.replace("\ncde\n", "\n123\n").replace("\n\n\n\nend", "\n45\nend");
    const QList<SwapCandidate> candidates = SwapRules::candidates(base, donor);
    QCOMPARE(SwapRules::swapped(bytes, SampleContainer::write(donor), {candidates.at(1), candidates.at(2)}),
             expected);
    QCOMPARE(SwapRules::swapped(bytes, SampleContainer::write(donor), {}), bytes);
}

void TestSampleFiles::archive()
{
    // 352441c2 is the CRC-32 of "abc".
    const QByteArray described = "0a00000000000000"
                                 "2100c24124350300000003000000"
                                 "01000000";
    const QByteArray zip = storedZip({{"x", "abc"}, {"y", "abc"}});
    const QByteArray entry = "504b0304" + described;
    const QByteArray line = "504b01020a00" + described + "00000000000000000000";
    QCOMPARE(zip.toHex(),
             entry + "78616263" + entry + "79616263" + line
                 + "00000000"
                   "78"
                 + line
                 + "22000000"
                   "79"
                 + "504b0506"
                   "00000000"
                   "02000200"
                   "5e000000"
                   "44000000"
                   "0000");
}

KVTEDITOR_TEST_MAIN(TestSampleFiles)
#include "tst_SampleFiles.moc"
