#include "core/HexMatches.h"
#include "core/HexModel.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace {

QList<int> positionsOf(const QByteArray &haystack, const QByteArray &needle)
{
    QList<int> positions;
    for (qsizetype at = haystack.indexOf(needle); at >= 0 && !needle.isEmpty();
         at = haystack.indexOf(needle, at + 1))
        positions << static_cast<int>(at);
    return positions;
}

} // namespace

class TestHexMatches : public QObject
{
    Q_OBJECT

private slots:
    void count_data();
    void count();
    void countOfRandomBytes();
    void countOverBlocks();
    void updateCountsAroundAnEdit();
    void countIsGivenUp();

    void text_data();
    void text();
    void textFollowsTheMatch();
    void smallEditIsCountedAtOnce();
    void largeEditCountsAnew();
    void needleThatChangesIsCountedAnew();
    void needleForgottenAtOnceIsNotCounted();
    void destroyedWhileCounting();
    void masks_data();
    void masks();
};

void TestHexMatches::count_data()
{
    QTest::addColumn<QByteArray>("haystack");
    QTest::addColumn<QByteArray>("needle");

    QTest::newRow("empty") << QByteArray() << QByteArray("a");
    QTest::newRow("no-needle") << QByteArray("abc") << QByteArray();
    QTest::newRow("absent") << QByteArray("abc") << QByteArray("d");
    QTest::newRow("whole") << QByteArray("abc") << QByteArray("abc");
    QTest::newRow("longer") << QByteArray("abc") << QByteArray("abcd");
    QTest::newRow("single-byte") << QByteArray("abcabca") << QByteArray("a");
    QTest::newRow("overlapping") << QByteArray("aaaaa") << QByteArray("aa");
    QTest::newRow("periodic") << QByteArray("abababab") << QByteArray("abab");
    QTest::newRow("falls-back") << QByteArray("aabaabaaab") << QByteArray("aabaaab");
    QTest::newRow("zeros") << QByteArray(1000, '\0') << QByteArray(10, '\0');
}

void TestHexMatches::count()
{
    QFETCH(QByteArray, haystack);
    QFETCH(QByteArray, needle);
    const QList<int> positions = positionsOf(haystack, needle);
    const auto count = MatchCount::of(haystack, needle);
    QVERIFY(count);
    QCOMPARE(count->total(), int(positions.size()));
    for (int i = 0; i < positions.size(); ++i)
        QCOMPARE(count->numberAt(haystack, needle, positions[i]), i + 1);
}

// Of few different bytes, so that there is much that matches in part.
void TestHexMatches::countOfRandomBytes()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 200; ++round) {
        QByteArray haystack(random.bounded(300), Qt::Uninitialized);
        for (char &byte : haystack)
            byte = static_cast<char>('a' + random.bounded(2));
        QByteArray needle(1 + random.bounded(6), Qt::Uninitialized);
        for (char &byte : needle)
            byte = static_cast<char>('a' + random.bounded(2));
        const QList<int> positions = positionsOf(haystack, needle);
        const auto count = MatchCount::of(haystack, needle);
        QCOMPARE(count->total(), int(positions.size()));
        for (int i = 0; i < positions.size(); ++i)
            QCOMPARE(count->numberAt(haystack, needle, positions[i]), i + 1);
    }
}

// Matches that lie across the ends of the blocks of 64 KiB.
void TestHexMatches::countOverBlocks()
{
    QByteArray haystack(300'000, '-');
    const QByteArray needle("needle");
    const QList<int> positions{0, 65'530, 65'536 * 2 - 3, 65'536 * 3, 299'994};
    for (const int position : positions)
        haystack.replace(position, needle.size(), needle);
    const auto count = MatchCount::of(haystack, needle);
    QCOMPARE(count->total(), 5);
    for (int i = 0; i < positions.size(); ++i)
        QCOMPARE(count->numberAt(haystack, needle, positions[i]), i + 1);
}

void TestHexMatches::updateCountsAroundAnEdit()
{
    QRandomGenerator random(2);
    QByteArray haystack(150'000, 'a');
    for (char &byte : haystack)
        byte = static_cast<char>('a' + random.bounded(2));
    const QList<int> boundaries{0, 65'536, 131'072, static_cast<int>(haystack.size())};
    for (const QByteArray &needle :
         {QByteArray("a"), QByteArray("abaab"), QByteArray("ab").repeated(40'000)}) {
        auto count = MatchCount::of(haystack, needle);
        for (int round = 0; round < 40; ++round) {
            const int length = 1 + random.bounded(round % 10 == 0 ? 70'000 : 10);
            const int near = boundaries[random.bounded(int(boundaries.size()))] - random.bounded(12);
            const int offset = std::clamp(near, 0, static_cast<int>(haystack.size()) - length);
            haystack.replace(offset, length, QByteArray("ab").repeated(length).first(length));
            count->update(haystack, needle, offset, length);
            const auto expected = MatchCount::of(haystack, needle);
            QCOMPARE(count->total(), expected->total());
            const int last = static_cast<int>(haystack.lastIndexOf(needle));
            if (last >= 0)
                QCOMPARE(count->numberAt(haystack, needle, last), expected->total());
        }
    }
}

void TestHexMatches::countIsGivenUp()
{
    int asked = 0;
    QVERIFY(!MatchCount::of(QByteArray(1'000'000, 'a'), "a", [&asked] { return ++asked == 3; }));
    QCOMPARE(asked, 3);
}

void TestHexMatches::text_data()
{
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<QString>("text");

    QTest::newRow("three") << QByteArray("ab") << u"3 matches"_s;
    QTest::newRow("one") << QByteArray("cd") << u"1 match"_s;
    QTest::newRow("none") << QByteArray("zz") << u"0 matches"_s;
}

void TestHexMatches::text()
{
    QFETCH(QByteArray, needle);
    HexModel model;
    model.setBytes("ab--ab--ab--cd");
    HexMatches matches(&model);
    matches.setNeedle(needle);
    QVERIFY(matches.text().isEmpty());
    WAIT_VERIFY(!matches.text().isEmpty());
    QTEST(matches.text(), "text");
    matches.setNeedle({});
    QVERIFY(matches.text().isEmpty());
}

void TestHexMatches::textFollowsTheMatch()
{
    HexModel model;
    model.setBytes("ab--ab--ab--");
    HexMatches matches(&model);
    matches.setNeedle("ab");
    model.setMatch(4, 2);
    WAIT_COMPARE(matches.text(), u"2 of 3"_s);
    QSignalSpy changed(&matches, &HexMatches::changed);
    model.setMatch(8, 2);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(matches.text(), u"3 of 3"_s);
    model.clearMatch();
    QCOMPARE(matches.text(), u"3 matches"_s);
}

void TestHexMatches::smallEditIsCountedAtOnce()
{
    HexModel model;
    model.setBytes("ab--ab--ab--");
    HexMatches matches(&model);
    matches.setNeedle("ab");
    WAIT_COMPARE(matches.text(), u"3 matches"_s);
    QSignalSpy changed(&matches, &HexMatches::changed);
    QVERIFY(model.applyPatch(2, "ab"));
    QCOMPARE(matches.text(), u"4 matches"_s);
    QVERIFY(changed.count() > 0);
    model.setBytes("ab");
    QCOMPARE(matches.text(), QString());
    // While it is counted.
    QCoreApplication::sendPostedEvents(&matches);
    QVERIFY(model.applyPatch(0, "--"));
    WAIT_COMPARE(matches.text(), u"0 matches"_s);
}

void TestHexMatches::largeEditCountsAnew()
{
    HexModel model;
    model.setBytes(QByteArray(2 << 20, '-'));
    HexMatches matches(&model);
    matches.setNeedle("ab");
    WAIT_COMPARE(matches.text(), u"0 matches"_s);
    QVERIFY(model.applyPatch(0, QByteArray("ab").repeated(1 << 20)));
    QCOMPARE(matches.text(), QString());
    WAIT_COMPARE(matches.text(), u"%1 matches"_s.arg(1 << 20));
}

void TestHexMatches::needleThatChangesIsCountedAnew()
{
    HexModel model;
    model.setBytes(QByteArray("ab-").repeated(1'000'000));
    HexMatches matches(&model);
    matches.setNeedle("ab");
    QCoreApplication::sendPostedEvents(&matches);
    matches.setNeedle("b-a");
    WAIT_COMPARE(matches.text(), u"999999 matches"_s);
}

void TestHexMatches::needleForgottenAtOnceIsNotCounted()
{
    HexModel model;
    model.setBytes("ab--ab");
    HexMatches matches(&model);
    matches.setNeedle("b");
    matches.forget();
    QCoreApplication::processEvents();
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    QCoreApplication::processEvents();
    QCOMPARE(matches.text(), QString());
}

void TestHexMatches::destroyedWhileCounting()
{
    HexModel model;
    model.setBytes(QByteArray(20'000'000, '\0'));
    {
        HexMatches matches(&model);
        matches.setNeedle(QByteArray(2, '\0'));
        QCoreApplication::sendPostedEvents(&matches);
    }
    // Nobody shares the buffer any more.
    const char *const data = model.bytes().constData();
    QVERIFY(model.applyPatch(0, "x"));
    QCOMPARE(static_cast<const void *>(model.bytes().constData()), static_cast<const void *>(data));
}

void TestHexMatches::masks_data()
{
    QTest::addColumn<QByteArray>("needle");
    QTest::addColumn<int>("firstRow");
    QTest::addColumn<QList<quint16>>("masks");

    // "ab" at 0, 15 and 46 of 48 bytes.
    using Masks = QList<quint16>;
    QTest::newRow("all") << QByteArray("ab") << 0 << Masks{0x8003, 0x0001, 0xC000, 0};
    QTest::newRow("began-above") << QByteArray("ab") << 1 << Masks{0x0001, 0xC000, 0, 0};
    QTest::newRow("past-the-end") << QByteArray("ab") << 3 << Masks{0, 0, 0, 0};
    QTest::newRow("far-past-the-end") << QByteArray("ab") << 100 << Masks{0, 0, 0, 0};
    QTest::newRow("overlapping") << QByteArray("--") << 1 << Masks{0xFFFE, 0x3FFF, 0, 0};
    QTest::newRow("none") << QByteArray("zz") << 0 << Masks{0, 0, 0, 0};
    QTest::newRow("no-needle") << QByteArray() << 0 << Masks{0, 0, 0, 0};
    QTest::newRow("too-long") << QByteArray(257, '-') << 0 << Masks{0, 0, 0, 0};
}

void TestHexMatches::masks()
{
    QFETCH(QByteArray, needle);
    QFETCH(int, firstRow);
    HexModel model;
    model.setBytes("ab-------------ab" + QByteArray(29, '-') + "ab");
    HexMatches matches(&model);
    matches.setNeedle(needle);
    QTEST(matches.masks(firstRow, 4), "masks");
}

KVTEDITOR_TEST_MAIN(TestHexMatches)
#include "tst_HexMatches.moc"
