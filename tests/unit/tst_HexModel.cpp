#include "core/HexModel.h"
#include "support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

QString cell(const HexModel &model, int row, int role)
{
    return model.data(model.index(row, 0), role).toString();
}

} // namespace

class TestHexModel : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void emptyBufferShowsOneEmptyRow();
    void rowCount_data();
    void rowCount();
    void rowCount_belowAnItemIsZero();
    void roles();
    void rowTexts_data();
    void rowTexts();
    void otherRolesAndIndexesGiveNothing();
    void indexOfARowThatIsGoneGivesNothing();
    void properties();

    void setBytes_resetsAndAlwaysAnnounces();
    void setBytes_keepsOrClampsCursor_data();
    void setBytes_keepsOrClampsCursor();
    void setBytes_doesNotShareLaterChanges();
    void setCursor_clamps_data();
    void setCursor_clamps();
    void setCursor_announcesOnlyChanges();
    void moveCursor_data();
    void moveCursor();
    void moveCursor_selects();
    void clickRow_data();
    void clickRow();
    void currentRow();

    void applyPatch_data();
    void applyPatch();
    void applyPatch_announcesTouchedRows_data();
    void applyPatch_announcesTouchedRows();
    void applyPatch_refusedAnnouncesNothing();

    void applyPatch_tellsWhatItOverwrote();
    void selectTo_data();
    void selectTo();
    void select_data();
    void select();
    void otherMovesEndTheSelection();
    void selection_announcesOnlyChanges();
    void applyPatch_keepsTheSelection();

    void setMatch_data();
    void setMatch();
    void setMatch_announcesOnlyChanges();
    void setBytes_forgetsTheMatch();
    void applyPatch_forgetsTheMatchItTouches_data();
    void applyPatch_forgetsTheMatchItTouches();

private:
    std::unique_ptr<HexModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestHexModel::init()
{
    m_tester.reset();
    m_model = std::make_unique<HexModel>();
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void TestHexModel::emptyBufferShowsOneEmptyRow()
{
    QCOMPARE(m_model->rowCount(), 1);
    QCOMPARE(m_model->byteCount(), 0);
    QCOMPARE(m_model->cursor(), 0);
    QCOMPARE(m_model->currentRow(), 0);
    QCOMPARE(m_model->bytes(), QByteArray());
    QCOMPARE(cell(*m_model, 0, HexModel::OffsetRole), u"00000000"_s);
    QCOMPARE(cell(*m_model, 0, HexModel::HexRole), QString());
    QCOMPARE(cell(*m_model, 0, HexModel::AsciiRole), QString());
}

void TestHexModel::rowCount_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("rows");

    QTest::newRow("0") << 0 << 1;
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("15") << 15 << 1;
    QTest::newRow("16") << 16 << 1;
    QTest::newRow("17") << 17 << 2;
    QTest::newRow("32") << 32 << 2;
    QTest::newRow("33") << 33 << 3;
    QTest::newRow("1000000") << 1'000'000 << 62'500;
}

void TestHexModel::rowCount()
{
    QFETCH(int, size);
    m_model->setBytes(QByteArray(size, 'x'));
    QTEST(m_model->rowCount(), "rows");
    QCOMPARE(m_model->byteCount(), size);
}

void TestHexModel::rowCount_belowAnItemIsZero()
{
    m_model->setBytes("some bytes");
    QCOMPARE(m_model->rowCount(m_model->index(0, 0)), 0);
}

void TestHexModel::roles()
{
    QCOMPARE(int(HexModel::OffsetRole), 257);
    QCOMPARE(int(HexModel::HexRole), 258);
    QCOMPARE(int(HexModel::AsciiRole), 259);
    const QHash<int, QByteArray> expected{{257, "offset"}, {258, "hex"}, {259, "ascii"}};
    QCOMPARE(m_model->roleNames(), expected);
}

void TestHexModel::rowTexts_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("offset");
    QTest::addColumn<QString>("hex");
    QTest::addColumn<QString>("ascii");

    const QByteArray seventeen("0123456789ABCDEFG");
    QTest::newRow("full-row") << seventeen << 0 << u"00000000"_s
                              << u"30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46"_s
                              << u"0123456789ABCDEF"_s;
    QTest::newRow("short-last-row") << seventeen << 1 << u"00000010"_s << u"47"_s << u"G"_s;
    QTest::newRow("printable-range") << QByteArray("\x1f\x20\x7e\x7f\x80\xff\x00\x0a", 8) << 0
                                     << u"00000000"_s << u"1F 20 7E 7F 80 FF 00 0A"_s << u". ~....."_s;
    QTest::newRow("letters-upper-case")
        << QByteArray("\xab\xcd\xef") << 0 << u"00000000"_s << u"AB CD EF"_s << u"..."_s;
    QTest::newRow("markup-as-it-is") << QByteArray("<b>&") << 0 << u"00000000"_s << u"3C 62 3E 26"_s
                                     << u"<b>&"_s;
    QTest::newRow("high-offset") << QByteArray(0x1A2B0 + 1, 'z') << 0x1A2B << u"0001A2B0"_s << u"7A"_s
                                 << u"z"_s;
}

void TestHexModel::rowTexts()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, row);
    m_model->setBytes(bytes);
    QTEST(cell(*m_model, row, 257), "offset");
    QTEST(cell(*m_model, row, 258), "hex");
    QTEST(cell(*m_model, row, 259), "ascii");
}

void TestHexModel::indexOfARowThatIsGoneGivesNothing()
{
    m_model->setBytes(QByteArray(17, 'a'));
    const QModelIndex first = m_model->index(0);
    const QModelIndex second = m_model->index(1);
    m_model->setBytes(QByteArray(16, 'a'));
    for (const int role : {257, 258, 259}) {
        QVERIFY(m_model->data(first, role).isValid());
        QVERIFY(!m_model->data(second, role).isValid());
    }
}

void TestHexModel::otherRolesAndIndexesGiveNothing()
{
    m_model->setBytes("some bytes");
    const QModelIndex first = m_model->index(0, 0);
    for (const int role : {0, int(Qt::EditRole), 256, 260, -1, highest}) {
        QVERIFY(!m_model->data(first, role).isValid());
    }
    for (const int role : {257, 258, 259}) {
        QVERIFY(!m_model->data({}, role).isValid());
        QVERIFY(!m_model->data(m_model->index(1, 0), role).isValid());
        QVERIFY(!m_model->data(m_model->index(0, 1), role).isValid());
    }
}

void TestHexModel::properties()
{
    const QMetaObject &meta = HexModel::staticMetaObject;
    const auto property = [](const char *name) {
        const QMetaObject &type = HexModel::staticMetaObject;
        return type.property(type.indexOfProperty(name));
    };
    for (const char *name : {"cursor", "byteCount", "currentRow", "matchStart", "matchLength",
                             "selectionStart", "selectionLength"}) {
        QVERIFY(property(name).isValid());
        QCOMPARE(property(name).metaType(), QMetaType::fromType<int>());
        QCOMPARE(property(name).isWritable(), QByteArray("cursor") == name);
    }
    QCOMPARE(property("cursor").notifySignal().name(), QByteArray("cursorChanged"));
    QCOMPARE(property("byteCount").notifySignal().name(), QByteArray("dataChangedSig"));
    const int cursorChanged = meta.indexOfSignal("cursorChanged()");
    QVERIFY(cursorChanged >= 0);
    const int dataChangedSig = meta.indexOfSignal("dataChangedSig()");
    QVERIFY(cursorChanged < dataChangedSig);
    QVERIFY(dataChangedSig < meta.indexOfSignal("matchChanged()"));
    QCOMPARE(property("matchStart").notifySignal().name(), QByteArray("matchChanged"));
    QCOMPARE(property("matchLength").notifySignal().name(), QByteArray("matchChanged"));
    QCOMPARE(property("selectionStart").notifySignal().name(), QByteArray("selectionChanged"));
    QCOMPARE(property("selectionLength").notifySignal().name(), QByteArray("selectionChanged"));
    QVERIFY(QMetaObject::invokeMethod(m_model.get(), "clickRow", Q_ARG(int, 0)));
}

void TestHexModel::setBytes_resetsAndAlwaysAnnounces()
{
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy data(m_model.get(), &HexModel::dataChangedSig);
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    m_model->setBytes("abc");
    m_model->setBytes("abc");
    QCOMPARE(resets.count(), 2);
    QCOMPARE(data.count(), 2);
    QCOMPARE(cursor.count(), 2);
}

void TestHexModel::setBytes_keepsOrClampsCursor_data()
{
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("expected");

    QTest::newRow("inside") << 10 << 50 << 10;
    QTest::newRow("at-new-last-byte") << 49 << 50 << 49;
    QTest::newRow("at-new-length") << 50 << 50 << 49;
    QTest::newRow("past-new-length") << 99 << 50 << 49;
    QTest::newRow("to-one-byte") << 99 << 1 << 0;
    QTest::newRow("to-empty") << 99 << 0 << 0;
}

void TestHexModel::setBytes_keepsOrClampsCursor()
{
    QFETCH(int, cursor);
    QFETCH(int, size);
    m_model->setBytes(QByteArray(100, 'a'));
    m_model->setCursor(cursor);
    QCOMPARE(m_model->cursor(), cursor);
    m_model->setBytes(QByteArray(size, 'b'));
    QTEST(m_model->cursor(), "expected");
}

void TestHexModel::setBytes_doesNotShareLaterChanges()
{
    const QByteArray original("original");
    m_model->setBytes(original);
    QVERIFY(m_model->applyPatch(0, "O"));
    QCOMPARE(original, QByteArray("original"));
    QCOMPARE(m_model->bytes(), QByteArray("Original"));
}

void TestHexModel::setCursor_clamps_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("expected");

    QTest::newRow("inside") << 20 << 7 << 7;
    QTest::newRow("last-byte") << 20 << 19 << 19;
    QTest::newRow("at-length") << 20 << 20 << 19;
    QTest::newRow("highest") << 20 << highest << 19;
    QTest::newRow("negative") << 20 << -1 << 0;
    QTest::newRow("lowest") << 20 << lowest << 0;
    QTest::newRow("empty-buffer") << 0 << 5 << 0;
    QTest::newRow("empty-buffer-negative") << 0 << -5 << 0;
}

void TestHexModel::setCursor_clamps()
{
    QFETCH(int, size);
    QFETCH(int, position);
    m_model->setBytes(QByteArray(size, 'a'));
    m_model->setCursor(position);
    QTEST(m_model->cursor(), "expected");
}

void TestHexModel::setCursor_announcesOnlyChanges()
{
    m_model->setBytes(QByteArray(20, 'a'));
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    QSignalSpy data(m_model.get(), &HexModel::dataChangedSig);
    m_model->setCursor(0);
    m_model->setCursor(-7);
    QCOMPARE(cursor.count(), 0);
    m_model->setCursor(19);
    QCOMPARE(cursor.count(), 1);
    m_model->setCursor(500);
    QCOMPARE(cursor.count(), 1);
    QVERIFY(m_model->setProperty("cursor", 3));
    QCOMPARE(cursor.count(), 2);
    QCOMPARE(data.count(), 0);
}

void TestHexModel::moveCursor_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<HexModel::Move>("move");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");

    // 40 bytes are two rows and a half; a page has two rows.
    QTest::newRow("left") << 40 << HexModel::Left << 16 << 15;
    QTest::newRow("left-at-the-start") << 40 << HexModel::Left << 0 << 0;
    QTest::newRow("right") << 40 << HexModel::Right << 15 << 16;
    QTest::newRow("right-at-the-end") << 40 << HexModel::Right << 39 << 39;
    QTest::newRow("up") << 40 << HexModel::Up << 21 << 5;
    QTest::newRow("up-in-the-first-row") << 40 << HexModel::Up << 5 << 5;
    QTest::newRow("down") << 40 << HexModel::Down << 5 << 21;
    QTest::newRow("down-to-a-short-row") << 40 << HexModel::Down << 28 << 39;
    QTest::newRow("down-in-the-last-row") << 40 << HexModel::Down << 33 << 33;
    QTest::newRow("page-up") << 40 << HexModel::PageUp << 37 << 5;
    QTest::newRow("page-up-past-the-start") << 40 << HexModel::PageUp << 21 << 5;
    QTest::newRow("page-down") << 40 << HexModel::PageDown << 5 << 37;
    QTest::newRow("page-down-past-the-end") << 40 << HexModel::PageDown << 17 << 33;
    QTest::newRow("row-start") << 40 << HexModel::RowStart << 31 << 16;
    QTest::newRow("row-end") << 40 << HexModel::RowEnd << 16 << 31;
    QTest::newRow("end-of-a-short-row") << 40 << HexModel::RowEnd << 33 << 39;
    QTest::newRow("file-start") << 40 << HexModel::FileStart << 39 << 0;
    QTest::newRow("file-end") << 40 << HexModel::FileEnd << 3 << 39;
    for (int move = HexModel::Left; move <= HexModel::FileEnd; ++move)
        QTest::addRow("empty-%d", move) << 0 << HexModel::Move(move) << 0 << 0;
}

void TestHexModel::moveCursor()
{
    QFETCH(int, size);
    QFETCH(HexModel::Move, move);
    QFETCH(int, from);
    QFETCH(int, to);
    m_model->setBytes(QByteArray(size, 'x'));
    m_model->setCursor(from);
    m_model->moveCursor(move, 2);
    QCOMPARE(m_model->cursor(), to);
    QCOMPARE(m_model->selectionLength(), 0);

    // The same way with Shift.
    m_model->setCursor(from);
    m_model->moveCursor(move, 2, true);
    QCOMPARE(m_model->cursor(), to);
    QCOMPARE(m_model->selectionStart(), size == 0 ? -1 : std::min(from, to));
    QCOMPARE(m_model->selectionLength(), size == 0 ? 0 : std::abs(from - to) + 1);
}

void TestHexModel::moveCursor_selects()
{
    m_model->setBytes(QByteArray(40, 'x'));
    m_model->setCursor(20);
    m_model->moveCursor(HexModel::Right, 2, true);
    m_model->moveCursor(HexModel::Down, 2, true);
    QCOMPARE(m_model->selectionStart(), 20);
    QCOMPARE(m_model->selectionLength(), 18);
    // Back over where it began.
    m_model->moveCursor(HexModel::RowStart, 2, true);
    m_model->moveCursor(HexModel::Up, 2, true);
    m_model->moveCursor(HexModel::Left, 2, true);
    QCOMPARE(m_model->selectionStart(), 15);
    QCOMPARE(m_model->selectionLength(), 6);
}

void TestHexModel::clickRow_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("expected");
    QTest::addColumn<int>("announced");

    // Forty bytes, the cursor at 5.
    QTest::newRow("first") << 0 << 0 << 1;
    QTest::newRow("second") << 1 << 16 << 1;
    QTest::newRow("short-last") << 2 << 32 << 1;
    QTest::newRow("past-end") << 3 << 39 << 1;
    QTest::newRow("highest") << highest << 39 << 1;
    QTest::newRow("overflowing-to-the-start") << 0x10000000 << 39 << 1;
    QTest::newRow("negative") << -1 << 0 << 1;
    QTest::newRow("lowest") << lowest << 0 << 1;
}

void TestHexModel::clickRow()
{
    QFETCH(int, row);
    m_model->setBytes(QByteArray(40, 'a'));
    m_model->setCursor(5);
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    m_model->clickRow(row);
    QTEST(m_model->cursor(), "expected");
    QTEST(int(cursor.count()), "announced");
    m_model->clickRow(row);
    QTEST(int(cursor.count()), "announced");
}

void TestHexModel::currentRow()
{
    m_model->setBytes(QByteArray(40, 'a'));
    for (const auto &[cursor, row] : {std::pair(0, 0), {15, 0}, {16, 1}, {31, 1}, {32, 2}, {39, 2}}) {
        m_model->setCursor(cursor);
        QCOMPARE(m_model->currentRow(), row);
    }
}

void TestHexModel::applyPatch_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("patch");
    QTest::addColumn<bool>("applied");
    QTest::addColumn<QByteArray>("after");

    const QByteArray text("abcdef");
    QTest::newRow("start") << text << 0 << QByteArray("XY") << true << QByteArray("XYcdef");
    QTest::newRow("middle") << text << 2 << QByteArray("X") << true << QByteArray("abXdef");
    QTest::newRow("nul-bytes") << text << 1 << QByteArray("\0\0", 2) << true << QByteArray("a\0\0def", 6);
    QTest::newRow("whole") << text << 0 << QByteArray("UVWXYZ") << true << QByteArray("UVWXYZ");
    QTest::newRow("ends-at-last-byte") << text << 4 << QByteArray("XY") << true << QByteArray("abcdXY");
    QTest::newRow("last-byte") << text << 5 << QByteArray("X") << true << QByteArray("abcdeX");
    QTest::newRow("one-past-end") << text << 5 << QByteArray("XY") << false << text;
    QTest::newRow("at-length") << text << 6 << QByteArray("X") << false << text;
    QTest::newRow("longer-than-buffer") << text << 0 << QByteArray("UVWXYZ!") << false << text;
    QTest::newRow("far-past-end") << text << highest << QByteArray("XY") << false << text;
    QTest::newRow("negative") << text << -1 << QByteArray("X") << false << text;
    QTest::newRow("lowest") << text << lowest << QByteArray("X") << false << text;
    QTest::newRow("empty-patch") << text << 2 << QByteArray() << false << text;
    QTest::newRow("empty-patch-at-length") << text << 6 << QByteArray() << false << text;
    QTest::newRow("empty-buffer") << QByteArray() << 0 << QByteArray("X") << false << QByteArray();
    QTest::newRow("empty-both") << QByteArray() << 0 << QByteArray() << false << QByteArray();
}

void TestHexModel::applyPatch()
{
    QFETCH(QByteArray, before);
    QFETCH(int, offset);
    QFETCH(QByteArray, patch);
    m_model->setBytes(before);
    m_model->setCursor(3);
    const int cursor = m_model->cursor();
    QTEST(m_model->applyPatch(offset, patch), "applied");
    QTEST(m_model->bytes(), "after");
    QCOMPARE(m_model->cursor(), cursor);
}

void TestHexModel::applyPatch_announcesTouchedRows_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("firstRow");
    QTest::addColumn<int>("lastRow");

    QTest::newRow("one-byte") << 0 << 1 << 0 << 0;
    QTest::newRow("up-to-row-end") << 0 << 16 << 0 << 0;
    QTest::newRow("over-row-end") << 15 << 2 << 0 << 1;
    QTest::newRow("row-start") << 16 << 1 << 1 << 1;
    QTest::newRow("three-rows") << 10 << 30 << 0 << 2;
    QTest::newRow("short-last-row") << 39 << 1 << 2 << 2;
}

void TestHexModel::applyPatch_announcesTouchedRows()
{
    QFETCH(int, offset);
    QFETCH(int, length);
    m_model->setBytes(QByteArray(40, 'a'));
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    QSignalSpy data(m_model.get(), &HexModel::dataChangedSig);
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QVERIFY(m_model->applyPatch(offset, QByteArray(length, 'b')));
    QCOMPARE(changes.count(), 1);
    QTEST(changes.first().at(0).toModelIndex().row(), "firstRow");
    QTEST(changes.first().at(1).toModelIndex().row(), "lastRow");
    QList<int> roles = changes.first().at(2).value<QList<int>>();
    std::sort(roles.begin(), roles.end());
    QCOMPARE(roles, QList<int>({258, 259}));
    QCOMPARE(data.count(), 1);
    QCOMPARE(cursor.count(), 0);
    QCOMPARE(resets.count(), 0);
}

void TestHexModel::applyPatch_refusedAnnouncesNothing()
{
    m_model->setBytes("abc");
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    QSignalSpy data(m_model.get(), &HexModel::dataChangedSig);
    QVERIFY(!m_model->applyPatch(3, "x"));
    QVERIFY(!m_model->applyPatch(-1, "x"));
    QVERIFY(!m_model->applyPatch(0, {}));
    QCOMPARE(changes.count(), 0);
    QCOMPARE(data.count(), 0);
}

void TestHexModel::setMatch_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("taken");

    // Forty bytes.
    QTest::newRow("first-byte") << 0 << 1 << true;
    QTest::newRow("over-row-end") << 10 << 20 << true;
    QTest::newRow("ends-at-last-byte") << 38 << 2 << true;
    QTest::newRow("whole-buffer") << 0 << 40 << true;
    QTest::newRow("one-past-end") << 39 << 2 << false;
    QTest::newRow("at-length") << 40 << 1 << false;
    QTest::newRow("longer-than-buffer") << 0 << 41 << false;
    QTest::newRow("overflowing") << highest << highest << false;
    QTest::newRow("empty") << 3 << 0 << false;
    QTest::newRow("negative-length") << 3 << -1 << false;
    QTest::newRow("negative-start") << -1 << 5 << false;
    QTest::newRow("lowest") << lowest << highest << false;
}

void TestHexModel::setMatch()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(bool, taken);
    m_model->setBytes(QByteArray(40, 'a'));
    QCOMPARE(m_model->matchStart(), -1);
    QCOMPARE(m_model->matchLength(), 0);
    m_model->setMatch(20, 3);
    m_model->setMatch(start, length);
    QCOMPARE(m_model->matchStart(), taken ? start : -1);
    QCOMPARE(m_model->matchLength(), taken ? length : 0);
    QCOMPARE(m_model->cursor(), 0);
    m_model->clearMatch();
    QCOMPARE(m_model->matchStart(), -1);
    QCOMPARE(m_model->matchLength(), 0);
}

void TestHexModel::setMatch_announcesOnlyChanges()
{
    m_model->setBytes(QByteArray(40, 'a'));
    QSignalSpy matches(m_model.get(), &HexModel::matchChanged);
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    QSignalSpy data(m_model.get(), &HexModel::dataChangedSig);
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->clearMatch();
    QCOMPARE(matches.count(), 0);
    m_model->setMatch(3, 2);
    m_model->setMatch(3, 2);
    QCOMPARE(matches.count(), 1);
    m_model->setMatch(3, 3);
    m_model->clearMatch();
    m_model->setMatch(39, 2);
    QCOMPARE(matches.count(), 3);
    QCOMPARE(cursor.count() + data.count() + changes.count(), 0);
}

void TestHexModel::setBytes_forgetsTheMatch()
{
    const QByteArray bytes(40, 'a');
    m_model->setBytes(bytes);
    m_model->setMatch(30, 2);
    QList<int> seen;
    connect(m_model.get(), &QAbstractItemModel::modelReset, this,
            [&] { seen.append(m_model->matchLength()); });
    QSignalSpy matches(m_model.get(), &HexModel::matchChanged);
    m_model->setBytes(bytes);
    m_model->setBytes(bytes);
    QCOMPARE(matches.count(), 1);
    QCOMPARE(m_model->matchStart(), -1);
    // Nobody who looks at the new buffer sees the old match.
    QCOMPARE(seen, QList<int>({0, 0}));
}

void TestHexModel::applyPatch_forgetsTheMatchItTouches_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("forgotten");

    // Forty bytes, of which those from 10 to 19 are the match.
    QTest::newRow("just-before") << 5 << 5 << false;
    QTest::newRow("its-first-byte") << 10 << 1 << true;
    QTest::newRow("into-its-start") << 5 << 6 << true;
    QTest::newRow("within") << 14 << 2 << true;
    QTest::newRow("around") << 0 << 40 << true;
    QTest::newRow("its-last-byte") << 19 << 1 << true;
    QTest::newRow("just-after") << 20 << 5 << false;
    QTest::newRow("refused") << 15 << 30 << false;
}

void TestHexModel::applyPatch_forgetsTheMatchItTouches()
{
    QFETCH(int, offset);
    QFETCH(int, length);
    QFETCH(bool, forgotten);
    m_model->setBytes(QByteArray(40, 'a'));
    m_model->setMatch(10, 10);
    QSignalSpy matches(m_model.get(), &HexModel::matchChanged);
    m_model->applyPatch(offset, QByteArray(length, 'b'));
    QCOMPARE(m_model->matchStart(), forgotten ? -1 : 10);
    QCOMPARE(m_model->matchLength(), forgotten ? 0 : 10);
    QCOMPARE(int(matches.count()), forgotten ? 1 : 0);
}

void TestHexModel::applyPatch_tellsWhatItOverwrote()
{
    m_model->setBytes("abcdef");
    QList<QByteArray> events;
    connect(m_model.get(), &HexModel::aboutToChange, this, [&] { events << m_model->bytes(); });
    connect(m_model.get(), &HexModel::overwritten, this, [&](int offset, const QByteArray &before) {
        events << QByteArray::number(offset) + ' ' + before + ' ' + m_model->bytes();
    });
    QVERIFY(m_model->applyPatch(2, "XY"));
    QCOMPARE(events, QList<QByteArray>({"abcdef", "2 cd abXYef"}));
    events.clear();
    QVERIFY(m_model->applyPatch(2, "XY"));
    QCOMPARE(events, QList<QByteArray>({"abXYef"}));
    events.clear();
    QVERIFY(!m_model->applyPatch(5, "XY"));
    QCOMPARE(events, QList<QByteArray>());
}

void TestHexModel::selectTo_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<QList<int>>("positions");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");

    QTest::newRow("forward") << 10 << QList{15} << 10 << 6;
    QTest::newRow("back") << 10 << QList{5} << 5 << 6;
    QTest::newRow("its-own-byte") << 10 << QList{10} << 10 << 1;
    QTest::newRow("over-the-start") << 10 << QList{15, 5} << 5 << 6;
    QTest::newRow("before-the-file") << 10 << QList{lowest} << 0 << 11;
    QTest::newRow("past-the-file") << 10 << QList{highest} << 10 << 30;
}

void TestHexModel::selectTo()
{
    QFETCH(int, from);
    QFETCH(QList<int>, positions);
    m_model->selectTo(3);
    QCOMPARE(m_model->selectionLength(), 0);
    m_model->setBytes(QByteArray(40, 'x'));
    m_model->setCursor(from);
    for (const int position : positions)
        m_model->selectTo(position);
    QTEST(m_model->selectionStart(), "start");
    QTEST(m_model->selectionLength(), "length");
    QCOMPARE(m_model->cursor(), std::clamp(positions.last(), 0, 39));
}

void TestHexModel::select_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("taken");

    QTest::newRow("within") << 10 << 5 << true;
    QTest::newRow("one-byte") << 10 << 1 << true;
    QTest::newRow("all") << 0 << 40 << true;
    QTest::newRow("last-byte") << 39 << 1 << true;
    QTest::newRow("past-the-end") << 39 << 2 << false;
    QTest::newRow("after-the-end") << 40 << 1 << false;
    QTest::newRow("before-the-start") << -1 << 5 << false;
    QTest::newRow("none") << 10 << 0 << false;
    QTest::newRow("negative") << 10 << -1 << false;
    QTest::newRow("overflow") << highest << highest << false;
}

void TestHexModel::select()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(bool, taken);
    m_model->setBytes(QByteArray(40, 'x'));
    m_model->setCursor(7);
    QCOMPARE(m_model->select(start, length), taken);
    QCOMPARE(m_model->cursor(), taken ? start : 7);
    QCOMPARE(m_model->selectionStart(), taken ? start : -1);
    QCOMPARE(m_model->selectionLength(), taken ? length : 0);
}

void TestHexModel::otherMovesEndTheSelection()
{
    const QList<std::function<void()>> moves{
        [&] { m_model->setCursor(m_model->cursor()); }, [&] { m_model->clickRow(0); },
        [&] { m_model->moveCursor(HexModel::Left, 2); }, [&] { m_model->setBytes(QByteArray(50, 'y')); }};
    for (const auto &move : moves) {
        m_model->setBytes(QByteArray(40, 'x'));
        QVERIFY(m_model->select(10, 5));
        QSignalSpy announced(m_model.get(), &HexModel::selectionChanged);
        move();
        QCOMPARE(m_model->selectionStart(), -1);
        QCOMPARE(m_model->selectionLength(), 0);
        QCOMPARE(announced.count(), 1);
    }
}

void TestHexModel::selection_announcesOnlyChanges()
{
    m_model->setBytes(QByteArray(40, 'x'));
    m_model->setCursor(5);
    QSignalSpy cursor(m_model.get(), &HexModel::cursorChanged);
    QSignalSpy selection(m_model.get(), &HexModel::selectionChanged);
    m_model->setCursor(5);
    m_model->setCursor(6);
    QCOMPARE(cursor.count(), 1);
    QCOMPARE(selection.count(), 0);
    m_model->selectTo(6);
    QCOMPARE(cursor.count(), 1);
    QCOMPARE(selection.count(), 1);
}

void TestHexModel::applyPatch_keepsTheSelection()
{
    m_model->setBytes(QByteArray(40, 'x'));
    QVERIFY(m_model->select(10, 5));
    QVERIFY(m_model->applyPatch(8, "abcd"));
    QCOMPARE(m_model->selectionStart(), 10);
    QCOMPARE(m_model->selectionLength(), 5);
}

KVTEDITOR_TEST_MAIN(TestHexModel)
#include "tst_HexModel.moc"
