#include "core/ByteDifferences.h"
#include "support/TestMain.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Byte by byte.
QList<ByteRange> simpleRanges(const QByteArray &ours, const QByteArray &theirs)
{
    QList<ByteRange> ranges;
    const int size = static_cast<int>(std::min(ours.size(), theirs.size()));
    for (int i = 0; i < size; ++i) {
        if (ours[i] == theirs[i])
            continue;
        if (!ranges.isEmpty() && ranges.last().start + ranges.last().length == i)
            ++ranges.last().length;
        else
            ranges.append({i, 1});
    }
    return ranges;
}

ByteDifferences between(const QByteArray &ours, const QByteArray &theirs)
{
    const qsizetype size = std::min(ours.size(), theirs.size());
    ByteDifferences differences(size);
    differences.update(ours, theirs, 0, size);
    return differences;
}

// Everything that can be asked gives what the simple way gives.
void verifyAll(const ByteDifferences &differences, const QByteArray &ours, const QByteArray &theirs)
{
    const QList<ByteRange> ranges = simpleRanges(ours, theirs);
    int bytes = 0;
    for (const ByteRange &range : ranges)
        bytes += range.length;
    QCOMPARE(differences.bytes(), bytes);
    QCOMPARE(differences.places(), int(ranges.size()));
    for (int i = 0; i < ranges.size(); ++i) {
        QCOMPARE(differences.place(ours, theirs, i), ranges[i]);
        QCOMPARE(differences.numberAt(ours, theirs, ranges[i].start), i + 1);
    }
    QCOMPARE(differences.place(ours, theirs, -1), ByteRange());
    QCOMPARE(differences.place(ours, theirs, static_cast<int>(ranges.size())), ByteRange());

    const int size = static_cast<int>(std::min(ours.size(), theirs.size()));
    for (int position = 0; position < size; ++position) {
        ByteRange at;
        ByteRange next = ranges.value(0);
        ByteRange previous = ranges.isEmpty() ? ByteRange() : ranges.last();
        for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) {
            if (range->start > position)
                next = *range;
        }
        for (const ByteRange &range : ranges) {
            if (range.start <= position && position < range.start + range.length)
                at = range;
            if (range.start < position)
                previous = range;
        }
        QCOMPARE(differences.placeAt(ours, theirs, position), at);
        QCOMPARE(differences.next(ours, theirs, position), next);
        QCOMPARE(differences.previous(ours, theirs, position), previous);
    }
}

} // namespace

class TestByteDifferences : public QObject
{
    Q_OBJECT

private slots:
    void places_data();
    void places();
    void updateFollowsEveryEdit();
    void pieceByPiece();
    void largeFileHasLargerBlocks();
    void updateOutsideIsIgnored();
    void map_data();
    void map();
};

void TestByteDifferences::places_data()
{
    QTest::addColumn<QByteArray>("ours");
    QTest::addColumn<QByteArray>("theirs");

    const QByteArray zeros(100, '\0');
    const QByteArray ones(100, '\1');
    QTest::newRow("both-empty") << QByteArray() << QByteArray();
    QTest::newRow("one-empty") << zeros << QByteArray();
    QTest::newRow("equal") << zeros << zeros;
    QTest::newRow("all") << zeros << ones;
    QTest::newRow("first-byte") << zeros << ones.first(1) + zeros.first(99);
    QTest::newRow("last-byte") << zeros << zeros.first(99) + ones.first(1);
    QTest::newRow("whole-block") << zeros << zeros.first(16) + ones.first(16) + zeros.first(68);
    QTest::newRow("over-a-block's-end") << zeros << zeros.first(14) + ones.first(4) + zeros.first(82);
    QTest::newRow("ends-with-a-block") << zeros << zeros.first(14) + ones.first(2) + zeros.first(84);
    QTest::newRow("begins-with-a-block") << zeros << zeros.first(16) + ones.first(2) + zeros.first(82);
    QTest::newRow("over-three-blocks") << zeros << zeros.first(10) + ones.first(30) + zeros.first(60);
    QTest::newRow("every-other") << zeros << QByteArray("\0\1", 2).repeated(50);
    QTest::newRow("shorter") << zeros << zeros.first(20) + ones.first(3);
    QTest::newRow("longer") << zeros.first(40) << zeros.first(39) + ones;
}

void TestByteDifferences::places()
{
    QFETCH(QByteArray, ours);
    QFETCH(QByteArray, theirs);
    verifyAll(between(ours, theirs), ours, theirs);
    verifyAll(between(theirs, ours), theirs, ours);
}

void TestByteDifferences::updateFollowsEveryEdit()
{
    QRandomGenerator random(1);
    const QByteArray theirs(200, 'a');
    QByteArray ours = theirs;
    ByteDifferences differences = between(ours, theirs);
    for (int i = 0; i < 300; ++i) {
        const int offset = random.bounded(200);
        const int length = 1 + random.bounded(std::min(200 - offset, 40));
        for (int j = offset; j < offset + length; ++j)
            ours[j] = random.bounded(3) == 0 ? 'b' : 'a';
        differences.update(ours, theirs, offset, length);
        verifyAll(differences, ours, theirs);
        if (QTest::currentTestFailed())
            return;
    }
}

// As a file is compared while it is read.
void TestByteDifferences::pieceByPiece()
{
    const QByteArray ours(200, 'a');
    const QByteArray theirs = QByteArray("aab").repeated(20) + QByteArray(140, 'b');
    ByteDifferences differences(200);
    for (int read = 0; read < 200; read += 40) {
        differences.update(ours, QByteArrayView(theirs).first(read + 40), read, 40);
        QCOMPARE(differences.places(),
                 int(simpleRanges(ours.first(read + 40), theirs.first(read + 40)).size()));
    }
    verifyAll(differences, ours, theirs);
}

void TestByteDifferences::largeFileHasLargerBlocks()
{
    const QByteArray ours(5'000'000, 'a');
    QByteArray theirs = ours;
    const QList<ByteRange> ranges{{0, 1}, {63, 2}, {70, 1}, {1'100'000, 300'000}, {4'999'998, 2}};
    for (const ByteRange &range : ranges)
        theirs.replace(range.start, range.length, QByteArray(range.length, 'b'));
    const ByteDifferences differences = between(ours, theirs);
    QCOMPARE(differences.bytes(), 300'006);
    QCOMPARE(differences.places(), 5);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(differences.place(ours, theirs, i), ranges[i]);
        QCOMPARE(differences.next(ours, theirs, ranges[i].start), ranges[(i + 1) % 5]);
        QCOMPARE(differences.previous(ours, theirs, ranges[i].start), ranges[(i + 4) % 5]);
    }
    QCOMPARE(differences.placeAt(ours, theirs, 1'300'000), ranges[3]);
    QCOMPARE(differences.map(10), (QList<std::pair<int, int>>{{0, 1}, {2, 3}, {9, 10}}));
}

void TestByteDifferences::updateOutsideIsIgnored()
{
    const QByteArray ours(20, 'a');
    const QByteArray theirs(30, 'b');
    ByteDifferences differences(20);
    differences.update(ours, theirs, 20, 5);
    differences.update(ours, theirs, 5, 0);
    differences.update(ours, theirs, 25, 1);
    QCOMPARE(differences.bytes(), 0);
    QCOMPARE(ByteDifferences().next({}, {}, 0), ByteRange());
    QCOMPARE(ByteDifferences().placeAt({}, {}, 0), ByteRange());
}

void TestByteDifferences::map_data()
{
    QTest::addColumn<QList<int>>("positions");
    QTest::addColumn<int>("lines");
    QTest::addColumn<QList<std::pair<int, int>>>("runs");

    // 160 bytes are ten blocks.
    using Runs = QList<std::pair<int, int>>;
    QTest::newRow("none") << QList<int>() << 10 << Runs();
    QTest::newRow("no-lines") << QList{0} << 0 << Runs();
    QTest::newRow("first-and-last") << QList{0, 159} << 10 << Runs{{0, 1}, {9, 10}};
    QTest::newRow("neighbours-are-one") << QList{16, 32, 48} << 10 << Runs{{1, 4}};
    QTest::newRow("fewer-lines") << QList{0, 32, 159} << 5 << Runs{{0, 2}, {4, 5}};
    QTest::newRow("more-lines") << QList{16} << 100 << Runs{{10, 20}};
}

void TestByteDifferences::map()
{
    QFETCH(QList<int>, positions);
    QFETCH(int, lines);
    const QByteArray ours(160, 'a');
    QByteArray theirs = ours;
    for (const int position : positions)
        theirs[position] = 'b';
    const auto runs = between(ours, theirs).map(lines);
    QTEST(runs, "runs");
}

KVTEDITOR_TEST_MAIN(TestByteDifferences)
#include "tst_ByteDifferences.moc"
