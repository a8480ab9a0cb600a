#include "SampleContainer.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace {

SampleTune smallTune()
{
    SampleTune tune{u"2015-03-02"_s, u"3.9.1"_s, u"18000001"_s, {}};
    tune.modules.append({u"Engine"_s,
                         u"1GCRKSE00FZ000001"_s,
                         u"SN1"_s,
                         u"12654321"_s,
                         {{u"System"_s, u"E38"_s}, {u"Equation"_s, u"a=b=c"_s}, {u"Empty"_s, QString()}},
                         {{u"Fuel"_s, QByteArray("\n\0end\n\xff", 7)}, {u"None"_s, QByteArray()}}});
    return tune;
}

} // namespace

class TestSampleContainer : public QObject
{
    Q_OBJECT

private slots:
    void layoutIsAsDocumented();
    void whatIsWrittenReadsBack_data();
    void whatIsWrittenReadsBack();
    void segmentOffsetsFindTheBytes();
    void overwrittenVinReadsBackOverwritten();
    void hostileTextsAreMadeHarmless();
    void longTextsAreCut();
    void hostileBytesAreRefused_data();
    void hostileBytesAreRefused();
    void everyCutIsRefused();
    void everyOverwrittenByteIsSurvived();
};

void TestSampleContainer::layoutIsAsDocumented()
{
    SampleTune tune{u"2015"_s, u"3.9"_s, u"18"_s, {}};
    tune.modules.append(
        {u"Engine"_s, u"1GCRKSE00FZ000001"_s, u"S"_s, u"12"_s, {{u"L"_s, u"V"_s}}, {{u"F"_s, "ab"}}});
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

void TestSampleContainer::whatIsWrittenReadsBack_data()
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

void TestSampleContainer::whatIsWrittenReadsBack()
{
    QFETCH(SampleTune, tune);
    QString error;
    const std::optional<SampleTune> read = SampleContainer::read(SampleContainer::write(tune), &error);
    QVERIFY2(read, qPrintable(error));
    QVERIFY(*read == tune);
    QCOMPARE(error, QString());
}

void TestSampleContainer::segmentOffsetsFindTheBytes()
{
    SampleTune tune = smallTune();
    tune.modules.append(SampleModule{u"Gearbox"_s, {}, {}, {}, {}, {{u"Shift"_s, "xyz"}}});
    const QByteArray bytes = SampleContainer::write(tune);
    const QList<qsizetype> offsets = SampleContainer::segmentOffsets(bytes);
    QCOMPARE(offsets.size(), 3);
    QCOMPARE(bytes.mid(offsets[0], 7), QByteArray("\n\0end\n\xff", 7));
    QVERIFY(bytes.first(offsets[1]).endsWith("None=00000000\n"));
    QCOMPARE(bytes.mid(offsets[2]), "xyz\nend\n");
    QCOMPARE(SampleContainer::segmentOffsets(bytes.chopped(1)), QList<qsizetype>());
}

void TestSampleContainer::overwrittenVinReadsBackOverwritten()
{
    QByteArray bytes = SampleContainer::write(smallTune());
    bytes.replace("1GCRKSE00FZ000001", "2FTRX18W1XCA01212");
    const std::optional<SampleTune> read = SampleContainer::read(bytes);
    QVERIFY(read);
    QCOMPARE(read->modules.first().vin, u"2FTRX18W1XCA01212"_s);
    QCOMPARE(read->modules.first().segments, smallTune().modules.first().segments);
}

void TestSampleContainer::hostileTextsAreMadeHarmless()
{
    SampleTune tune;
    tune.created = u"a\nend\r"_s + QChar(u'\0') + u"b"_s;
    tune.modules.append({u"M"_s, {}, {}, {}, {{u"x=y"_s, u" v "_s}}, {{u"s=t"_s, "1"}}});
    const std::optional<SampleTune> read = SampleContainer::read(SampleContainer::write(tune));
    QVERIFY(read);
    QCOMPARE(read->created, u"a_end__b"_s);
    QCOMPARE(read->modules.first().rows.first().label, u"x_y"_s);
    QCOMPARE(read->modules.first().rows.first().value, u"v"_s);
    QCOMPARE(read->modules.first().segments.first().name, u"s_t"_s);
}

void TestSampleContainer::longTextsAreCut()
{
    SampleTune tune;
    tune.modules.append({QString(1'000'000, QChar(u'\u20ac')), {}, {}, {}, {}, {}});
    tune.modules.first().rows.append({QString(9000, u'l'), QString(9000, u'v')});
    const std::optional<SampleTune> read = SampleContainer::read(SampleContainer::write(tune));
    QVERIFY(read);
    QCOMPARE(read->modules.first().title, QString(256, QChar(u'\u20ac')));
    QCOMPARE(read->modules.first().rows.first().value, QString(256, u'v'));
}

void TestSampleContainer::hostileBytesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray magic = "KVTSAMPLE1\n";
    const QString cut = u"The file is cut short"_s;
    QTest::newRow("empty") << QByteArray() << u"Not a sample container"_s;
    QTest::newRow("zeros") << QByteArray(1000, '\0') << u"Not a sample container"_s;
    QTest::newRow("magic-of-another-version")
        << QByteArray("KVTSAMPLE2\nend\n") << u"Not a sample container"_s;
    QTest::newRow("magic-only") << magic << cut;
    QTest::newRow("no-newline-for-ever") << magic + QByteArray(1'000'000, 'x') << cut;
    QTest::newRow("unknown-line") << magic + "module\nwhat        x\nend\n" << u"An unknown line"_s;
    QTest::newRow("row-before-module") << magic + "row         a=b\nend\n"
                                       << u"A module's line before the first module"_s;
    QTest::newRow("row-without-value") << magic + "module\nrow         ab\nend\n" << u"A row without"_s;
    const QByteArray segment = magic + "module\nsegment     ";
    const QString noEnd = u"A segment does not end where it says"_s;
    QTest::newRow("segment-without-size") << segment + "F\nab\nend\n" << u"A segment without a size"_s;
    QTest::newRow("segment-size-no-number") << segment + "F=xyz\nab\nend\n" << u"A segment without a size"_s;
    QTest::newRow("segment-size-negative") << segment + "F=-2\nab\nend\n" << u"A segment without a size"_s;
    QTest::newRow("segment-size-past-end") << segment + "F=ff\nab\nend\n" << noEnd;
    QTest::newRow("segment-size-largest") << segment + "F=7fffffffffffffff\nab\nend\n" << noEnd;
    QTest::newRow("segment-size-beyond-64-bit") << segment + "F=ffffffffffffffff\nab\nend\n"
                                                << u"A segment without a size"_s;
    QTest::newRow("segment-size-too-small") << segment + "F=1\nab\nend\n" << noEnd;
    QTest::newRow("bytes-after-end") << magic + "end\n\n" << u"Bytes after the end"_s;
    QTest::newRow("too-many-modules") << magic + QByteArray("module\n").repeated(65) + "end\n"
                                      << u"Too many modules"_s;
    QTest::newRow("too-many-rows") << magic + "module\n" + QByteArray("row         a=b\n").repeated(65)
            + "end\n" << u"A row without"_s;
    QTest::newRow("too-many-segments") << magic + "module\n" + QByteArray("segment     a=0\n\n").repeated(257)
            + "end\n" << u"A segment without a size"_s;
}

void TestSampleContainer::hostileBytesAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    QString error;
    QVERIFY(!SampleContainer::read(bytes, &error));
    QVERIFY2(error.startsWith(reason), qPrintable(error));
    QVERIFY(!SampleContainer::read(bytes));
}

void TestSampleContainer::everyCutIsRefused()
{
    const QByteArray whole = SampleContainer::write(smallTune());
    for (qsizetype size = 0; size < whole.size(); ++size)
        QVERIFY(!SampleContainer::read(whole.left(size)));
}

void TestSampleContainer::everyOverwrittenByteIsSurvived()
{
    const QByteArray whole = SampleContainer::write(smallTune());
    int refused = 0;
    for (qsizetype at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\n', '=', '\xff', '9'}) {
            QByteArray changed = whole;
            changed[at] = byte;
            QString error;
            const std::optional<SampleTune> read = SampleContainer::read(changed, &error);
            QCOMPARE(read.has_value(), error.isEmpty());
            refused += read ? 0 : 1;
        }
    }
    QVERIFY(refused > 0);
}

KVTEDITOR_TEST_MAIN(TestSampleContainer)
#include "tst_SampleContainer.moc"
