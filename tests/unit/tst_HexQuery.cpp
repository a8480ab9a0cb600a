#include "core/FileTools.h"
#include "support/TestMain.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class TestHexQuery : public QObject
{
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
    void parse_longQuery();
    void find_data();
    void find();
    void findPrevious_data();
    void findPrevious();
    void findPrevious_isTheLastOfAll();
    void offset_data();
    void offset();
    void findNext_data();
    void findNext();
    void replace_data();
    void replace();
    void find_farAway_data();
    void find_farAway();
    void find_isLinearInTheHaystack();
    void find_absentInAQuarterOfAGibibyte();
};

void TestHexQuery::parse_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("blank") << u"  \t\n "_s << QByteArray();
    QTest::newRow("no-break-space-only") << u"\u00a0"_s << QByteArray();
    QTest::newRow("hex-pair") << u"FF"_s << QByteArray("\xff");
    QTest::newRow("hex-blank") << u"FF 00"_s << QByteArray("\xff\0", 2);
    QTest::newRow("hex-colon-lower-case") << u"ff:00"_s << QByteArray("\xff\0", 2);
    QTest::newRow("hex-comma") << u"FF,00"_s << QByteArray("\xff\0", 2);
    QTest::newRow("hex-semicolon") << u"FF;00"_s << QByteArray("\xff\0", 2);
    QTest::newRow("hex-tab-line-feed") << u"\tFF\n00 "_s << QByteArray("\xff\0", 2);
    QTest::newRow("hex-mixed-separators") << u"  de:ad be,ef "_s << QByteArray("\xde\xad\xbe\xef");
    QTest::newRow("hex-separator-inside-pair") << u"D,E A;D"_s << QByteArray("\xde\xad");
    QTest::newRow("hex-separators-around") << u",;FF;,"_s << QByteArray("\xff");
    QTest::newRow("hex-mixed-case") << u"aBcD"_s << QByteArray("\xab\xcd");
    QTest::newRow("hex-zeros") << u"000000"_s << QByteArray("\0\0\0", 3);
    QTest::newRow("word-of-hex-letters") << u"CAFE"_s << QByteArray("\xca\xfe");
    QTest::newRow("number-of-even-length") << u"12345678"_s << QByteArray("\x12\x34\x56\x78");
    QTest::newRow("text-odd-hex-digits") << u"ABC"_s << QByteArray("ABC");
    QTest::newRow("text-one-hex-digit") << u"7"_s << QByteArray("7");
    QTest::newRow("text-odd-after-stripping") << u"dead beef!"_s << QByteArray("dead beef!");
    QTest::newRow("text-plain") << u"VIN"_s << QByteArray("VIN");
    QTest::newRow("text-trimmed-inner-kept") << u"  a, b : z  "_s << QByteArray("a, b : z");
    QTest::newRow("text-hex-prefix") << u"0x1F"_s << QByteArray("0x1F");
    QTest::newRow("text-only-separators") << u",;:"_s << QByteArray(",;:");
    QTest::newRow("text-beyond-f") << u"FG"_s << QByteArray("FG");
    QTest::newRow("text-accent") << u"\u00e9"_s << QByteArray("\xc3\xa9");
    QTest::newRow("text-full-width-digits") << u"\uff11\uff12"_s << QByteArray("\xef\xbc\x91\xef\xbc\x92");
    QTest::newRow("text-no-break-space-inside") << u"FF\u00a000"_s
                                                << QByteArray("FF\xc2\xa0"
                                                              "00");
    QTest::newRow("text-dash") << u"FF-00"_s << QByteArray("FF-00");
}

void TestHexQuery::parse()
{
    QFETCH(QString, query);
    QTEST(FileTools::parseHexQuery(query), "bytes");
}

void TestHexQuery::parse_longQuery()
{
    QCOMPARE(FileTools::parseHexQuery(QString(2'000'000, u'0')), QByteArray(1'000'000, '\0'));
    QCOMPARE(FileTools::parseHexQuery(QString(1'999'999, u'z')), QByteArray(1'999'999, 'z'));
}

void TestHexQuery::find_data()
{
    QTest::addColumn<QByteArray>("haystack");
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("position");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    const QByteArray text("abcabc");
    QTest::newRow("at-start") << text << QByteArray("abc") << 0 << 0;
    QTest::newRow("from-one-past-first") << text << QByteArray("abc") << 1 << 3;
    QTest::newRow("from-at-match") << text << QByteArray("abc") << 3 << 3;
    QTest::newRow("from-past-last-match") << text << QByteArray("abc") << 4 << -1;
    QTest::newRow("at-end-single-byte") << text << QByteArray("c") << 5 << 5;
    QTest::newRow("from-at-length") << text << QByteArray("c") << 6 << -1;
    QTest::newRow("from-past-length") << text << QByteArray("a") << 100 << -1;
    QTest::newRow("from-highest") << text << QByteArray("a") << highest << -1;
    QTest::newRow("from-negative-is-start") << text << QByteArray("c") << -1 << 2;
    QTest::newRow("from-negative-not-counted-from-end") << text << QByteArray("abc") << -3 << 0;
    QTest::newRow("from-lowest") << text << QByteArray("b") << lowest << 1;
    QTest::newRow("absent") << text << QByteArray("x") << 0 << -1;
    QTest::newRow("needle-is-haystack") << text << text << 0 << 0;
    QTest::newRow("needle-longer") << text << QByteArray("abcabcd") << 0 << -1;
    QTest::newRow("needle-empty") << text << QByteArray() << 0 << -1;
    QTest::newRow("needle-empty-haystack-empty") << QByteArray() << QByteArray() << 0 << -1;
    QTest::newRow("haystack-empty") << QByteArray() << QByteArray("a") << 0 << -1;
    QTest::newRow("overlapping-first") << QByteArray("aaaa") << QByteArray("aa") << 0 << 0;
    QTest::newRow("overlapping-next") << QByteArray("aaaa") << QByteArray("aa") << 1 << 1;
    QTest::newRow("overlapping-last") << QByteArray("aaaa") << QByteArray("aa") << 3 << -1;
    QTest::newRow("partial-match-first") << QByteArray("ababac") << QByteArray("abac") << 0 << 2;
    QTest::newRow("nul-bytes") << QByteArray("a\0b\0\0c", 6) << QByteArray("\0\0", 2) << 0 << 3;
    QTest::newRow("high-bytes") << QByteArray("\x7f\x80\xff\x80") << QByteArray("\xff\x80") << 0 << 2;
}

void TestHexQuery::find()
{
    QFETCH(QByteArray, haystack);
    QFETCH(QByteArray, needle);
    QFETCH(int, from);
    QTEST(FileTools::findBytes(haystack, needle, from), "position");
}

void TestHexQuery::findPrevious_data()
{
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("position");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("last") << QByteArray("abc") << 6 << 3;
    QTest::newRow("before-the-last") << QByteArray("abc") << 3 << 0;
    QTest::newRow("reaches-across-before") << QByteArray("abc") << 4 << 3;
    QTest::newRow("before-the-first-wraps") << QByteArray("abc") << 0 << 3;
    QTest::newRow("whole") << QByteArray("abcabc") << 1 << 0;
    QTest::newRow("only-one-found-again") << QByteArray("ca") << 2 << 2;
    QTest::newRow("longer") << QByteArray("abcabca") << 6 << -1;
    QTest::newRow("absent") << QByteArray("x") << 6 << -1;
    QTest::newRow("empty") << QByteArray() << 6 << -1;
    QTest::newRow("past-the-end") << QByteArray("c") << highest << 5;
    QTest::newRow("lowest-wraps") << QByteArray("c") << lowest << 5;
}

void TestHexQuery::findPrevious()
{
    QFETCH(QByteArray, needle);
    QFETCH(int, before);
    QTEST(FileTools::findPrevious("abcabc", needle, before), "position");
    QCOMPARE(FileTools::findPrevious({}, needle, before), -1);
}

// Needles of two values, which begin again within themselves.
void TestHexQuery::findPrevious_isTheLastOfAll()
{
    QRandomGenerator random(7);
    const auto bytes = [&random](int size) {
        QByteArray made(size, 'a');
        for (char &c : made)
            c = random.bounded(2) == 0 ? 'a' : 'b';
        return made;
    };
    for (int round = 0; round < 2000; ++round) {
        const QByteArray haystack = bytes(random.bounded(1, 60));
        const QByteArray needle = bytes(random.bounded(1, 9));
        const int before = random.bounded(0, 62);
        qsizetype expected = before == 0 ? -1 : haystack.lastIndexOf(needle, before - 1);
        if (expected < 0)
            expected = haystack.lastIndexOf(needle);
        QCOMPARE(FileTools::findPrevious(haystack, needle, before), static_cast<int>(expected));
    }
}

void TestHexQuery::offset_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isOffset");
    QTest::addColumn<qint64>("offset");

    const std::pair<const char *, qint64> offsets[] = {
        {"1F3A7", 0x1F3A7},       {"0x1F3A7", 0x1F3A7},
        {"0X1f3a7", 0x1F3A7},     {"127911d", 127911},
        {"127911D", 127911},      {"0x10d", 0x10D},
        {"1ad", 0x1AD},           {"d", 0xD},
        {"+0x40", 0x140},         {"+40", 0x140},
        {"+64d", 0x140},          {"-16", 0xEA},
        {"-16d", 0xF0},           {"- 10", 0xF0},
        {"-200", -0x100},         {"end", 0x3FF},
        {" END ", 0x3FF},         {"0", 0},
        {"ffffffff", 0xFFFFFFFF}, {"9999999999d", 9999999999},
    };
    for (const auto &[text, offset] : offsets)
        QTest::newRow(text) << QString::fromLatin1(text) << true << offset;
    for (const char *text : {"", " ", "x", "0x", "xd", "+", "-end", "12 34", "1ffffffff", "12345678901d",
                             "1.5", "g1", "0x-1", "+-1", "1F3A7:20"})
        QTest::addRow("none: %s", text) << QString::fromLatin1(text) << false << qint64(0);
    QTest::newRow("none: full-width digits") << u"\uff11\uff12"_s << false << qint64(0);
}

void TestHexQuery::offset()
{
    QFETCH(QString, text);
    QFETCH(bool, isOffset);
    QFETCH(qint64, offset);
    const std::optional<qint64> read = FileTools::parseOffset(text, 0x100, 0x400);
    QCOMPARE(read.has_value(), isOffset);
    QCOMPARE(read.value_or(0), offset);
    QCOMPARE(FileTools::parseOffset(u"end"_s, 0, 0), std::optional<qint64>(0));
}

void TestHexQuery::findNext_data()
{
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("position");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("at-start") << QByteArray("abc") << 0 << 0;
    QTest::newRow("from-one-past-first") << QByteArray("abc") << 1 << 3;
    QTest::newRow("from-one-past-last-wraps") << QByteArray("abc") << 4 << 0;
    QTest::newRow("only-one-found-again") << QByteArray("abca") << 1 << 0;
    QTest::newRow("wraps-to-one-across-from") << QByteArray("bcab") << 3 << 1;
    QTest::newRow("wraps-to-one-just-before-from") << QByteArray("cab") << 3 << 2;
    QTest::newRow("from-at-length-wraps") << QByteArray("c") << 6 << 2;
    QTest::newRow("from-highest-wraps") << QByteArray("c") << highest << 2;
    QTest::newRow("from-negative-is-start") << QByteArray("c") << -1 << 2;
    QTest::newRow("from-lowest") << QByteArray("b") << lowest << 1;
    QTest::newRow("absent-from-start") << QByteArray("x") << 0 << -1;
    QTest::newRow("absent-from-middle") << QByteArray("x") << 3 << -1;
    QTest::newRow("needle-longer") << QByteArray("abcabcd") << 2 << -1;
    QTest::newRow("needle-empty") << QByteArray() << 1 << -1;
    QTest::newRow("needle-empty-from-start") << QByteArray() << 0 << -1;
}

void TestHexQuery::findNext()
{
    QFETCH(QByteArray, needle);
    QFETCH(int, from);
    QTEST(FileTools::findNext("abcabc", needle, from), "position");
    QCOMPARE(FileTools::findNext({}, needle, from), -1);
}

// With quadratic work these searches would take hours, and the program would be stopped from outside.
void TestHexQuery::replace_data()
{
    QTest::addColumn<QByteArray>("haystack");
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<QByteArray>("replacement");
    QTest::addColumn<int>("start");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("count");

    const auto row = [](const char *name) -> QTestData & { return QTest::newRow(name); };
    row("one") << QByteArray("abcd") << QByteArray("bc") << QByteArray("XY") << 1 << QByteArray("XY") << 1;
    row("several") << QByteArray("-ab--ab-") << QByteArray("ab") << QByteArray("XY") << 1
                   << QByteArray("XY--XY") << 2;
    row("one-after-the-other") << QByteArray("aaaa") << QByteArray("aa") << QByteArray("XY") << 0
                               << QByteArray("XYXY") << 2;
    row("overlapping-counts-once") << QByteArray("aaa") << QByteArray("aa") << QByteArray("ba") << 0
                                   << QByteArray("ba") << 1;
    row("what-is-written-is-not-found")
        << QByteArray("ab") << QByteArray("a") << QByteArray("b") << 0 << QByteArray("b") << 1;
    row("at-the-end") << QByteArray("xxab") << QByteArray("ab") << QByteArray("XY") << 2 << QByteArray("XY")
                      << 1;
    row("absent") << QByteArray("abc") << QByteArray("x") << QByteArray("y") << -1 << QByteArray() << 0;
    row("other-length") << QByteArray("abc") << QByteArray("a") << QByteArray("xy") << -1 << QByteArray()
                        << 0;
    row("empty") << QByteArray("abc") << QByteArray() << QByteArray() << -1 << QByteArray() << 0;
}

void TestHexQuery::replace()
{
    QFETCH(QByteArray, haystack);
    QFETCH(QByteArray, needle);
    QFETCH(QByteArray, replacement);
    const FileTools::Replaced replaced = FileTools::replaceBytes(haystack, needle, replacement);
    QTEST(replaced.start, "start");
    QTEST(replaced.bytes, "bytes");
    QTEST(replaced.count, "count");
}

void TestHexQuery::find_farAway_data()
{
    QTest::addColumn<QByteArray>("haystack");
    QTest::addColumn<QByteArray>("needle");

    // Beyond the first 64 KiB the needle's rarest byte is looked for, until it shows too often.
    QRandomGenerator random(3);
    QByteArray noise(300'000, Qt::Uninitialized);
    for (char &byte : noise)
        byte = static_cast<char>(random.bounded(256));
    QByteArray twoValues = noise;
    for (char &byte : twoValues)
        byte = byte & 1 ? 'b' : 'a';
    const QByteArray zeros(300'000, '\0');
    const QByteArray periodic = QByteArray(31, '\0').append('\1').repeated(9'000);
    QTest::newRow("noise") << noise << QByteArray("needle");
    QTest::newRow("noise-one-byte") << QByteArray(noise).replace('n', "") << QByteArray("n");
    QTest::newRow("noise-long") << noise << QByteArray("needle").repeated(5'000);
    QTest::newRow("zeros") << zeros << QByteArray("\0\0\0\1", 4);
    QTest::newRow("zeros-late") << zeros << QByteArray("\1\0\0\0", 4);
    QTest::newRow("zeros-only") << QByteArray(9, '\0').append('x').repeated(30'000) << QByteArray(10, '\0');
    QTest::newRow("two-values") << twoValues << QByteArray("ab").repeated(20);
    QTest::newRow("two-values-crowded") << twoValues << QByteArray(60, 'a');
    QTest::newRow("periodic") << periodic << periodic.first(64'000) + 'x';
    QTest::newRow("periodic-rarest-first") << periodic << '\1' + periodic.first(6'400) + '\1';
}

void TestHexQuery::find_farAway()
{
    QFETCH(QByteArray, haystack);
    QFETCH(QByteArray, needle);
    QCOMPARE(FileTools::findBytes(haystack, needle, 0), int(haystack.indexOf(needle)));
    const int size = static_cast<int>(haystack.size());
    const int length = static_cast<int>(needle.size());
    for (const int place : {0, 65'535, 65'536, 65'537, 131'072, 200'001, size - length}) {
        QByteArray with = haystack;
        with.replace(place, length, needle);
        const int first = static_cast<int>(with.indexOf(needle));
        QCOMPARE(FileTools::findBytes(with, needle, 0), first);
        // From each side of it, so that it lies nearby, far away, and across what is looked at first.
        for (const int from : {place - 65'537, place - 65'536, place - length, place - 1, place, place + 1})
            QCOMPARE(FileTools::findBytes(with, needle, from), int(with.indexOf(needle, std::max(from, 0))));
    }
}

void TestHexQuery::find_isLinearInTheHaystack()
{
    constexpr int size = 64 * 1024 * 1024;
    QByteArray haystack(size, '\0');
    const QByteArray shortNeedle("\0\0\0\1", 4);
    const QByteArray longNeedle = QByteArray(1024 * 1024, '\0') + '\1';
    const QByteArray lateNeedle = '\1' + QByteArray(1024 * 1024, '\0');
    QCOMPARE(FileTools::findBytes(haystack, shortNeedle, 0), -1);
    QCOMPARE(FileTools::findBytes(haystack, longNeedle, 0), -1);
    QCOMPARE(FileTools::findBytes(haystack, lateNeedle, 0), -1);
    haystack[size - 1] = '\1';
    QCOMPARE(FileTools::findBytes(haystack, shortNeedle, 0), size - 4);
    QCOMPARE(FileTools::findBytes(haystack, longNeedle, 1), size - 1024 * 1024 - 1);
}

void TestHexQuery::find_absentInAQuarterOfAGibibyte()
{
    constexpr int size = 256 * 1024 * 1024;
    const QByteArray zeros(size, '\0');
    const QByteArray needle("\0\0\0\1", 4);
    QCOMPARE(FileTools::findBytes(zeros, needle, 0), -1);
    QCOMPARE(FileTools::findBytes(zeros, needle, size - 3), -1);
    QCOMPARE(FileTools::findBytes(zeros, needle.first(3), size - 3), size - 3);
}

KVTEDITOR_TEST_MAIN(TestHexQuery)
#include "tst_HexQuery.moc"
