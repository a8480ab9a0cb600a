#include "core/SortedRows.h"

#include "support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QVariantMap>

using namespace Qt::StringLiterals;

class TestSortedRows : public QObject
{
    Q_OBJECT

private slots:
    void order_data();
    void order();
    void otherRowsAreSortedToo();
    void indexOutside();
};

namespace {

/// One map for each name, with its length as the year.
QVariantList rowsOf(const QStringList &names)
{
    QVariantList rows;
    for (const QString &name : names)
        rows.append(QVariantMap{{u"name"_s, name}, {u"year"_s, QString::number(name.size())}});
    return rows;
}

QStringList namesIn(const SortedRows &sorted)
{
    const int role = sorted.roleNames().key("row");
    QStringList names;
    for (int row = 0; row < sorted.rowCount(); ++row)
        names.append(sorted.data(sorted.index(row, 0), role).toMap().value(u"name"_s).toString());
    return names;
}

} // namespace

void TestSortedRows::order_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<QStringList>("names");

    // The list: b10, A2, b9, a1, c, b9.
    QTest::newRow("own") << QString() << false
                         << QStringList{u"b10"_s, u"A2"_s, u"b9"_s, u"a1"_s, u"c"_s, u"b9"_s};
    QTest::newRow("up") << u"name"_s << false
                        << QStringList{u"a1"_s, u"A2"_s, u"b9"_s, u"b9"_s, u"b10"_s, u"c"_s};
    QTest::newRow("down") << u"name"_s << true
                          << QStringList{u"c"_s, u"b10"_s, u"b9"_s, u"b9"_s, u"A2"_s, u"a1"_s};
    QTest::newRow("equal-up") << u"year"_s << false
                              << QStringList{u"c"_s, u"A2"_s, u"b9"_s, u"a1"_s, u"b9"_s, u"b10"_s};
    QTest::newRow("equal-down") << u"year"_s << true
                                << QStringList{u"b10"_s, u"A2"_s, u"b9"_s, u"a1"_s, u"b9"_s, u"c"_s};
    QTest::newRow("member-that-none-has")
        << u"size"_s << false << QStringList{u"b10"_s, u"A2"_s, u"b9"_s, u"a1"_s, u"c"_s, u"b9"_s};
}

void TestSortedRows::order()
{
    QFETCH(QString, key);
    QFETCH(bool, descending);
    SortedRows sorted;
    const QAbstractItemModelTester tester(&sorted);
    const QVariantList rows = rowsOf({u"b10"_s, u"A2"_s, u"b9"_s, u"a1"_s, u"c"_s, u"b9"_s});
    sorted.setRows(rows);
    sorted.setKey(key);
    sorted.setDescending(descending);
    QTEST(namesIn(sorted), "names");
    for (int row = 0; row < sorted.rowCount(); ++row)
        QCOMPARE(rows[sorted.listIndex(row)].toMap().value(u"name"_s).toString(), namesIn(sorted)[row]);
    // Two equal ones are still two.
    QSet<int> indexes;
    for (int row = 0; row < sorted.rowCount(); ++row)
        indexes.insert(sorted.listIndex(row));
    QCOMPARE(indexes.size(), rows.size());
    // And back.
    sorted.setKey({});
    sorted.setDescending(false);
    QCOMPARE(sorted.listIndex(0), 0);
    QCOMPARE(sorted.listIndex(5), 5);
}

void TestSortedRows::otherRowsAreSortedToo()
{
    SortedRows sorted;
    QSignalSpy reset(&sorted, &SortedRows::modelReset);
    QSignalSpy changed(&sorted, &SortedRows::rowsChanged);
    sorted.setKey(u"name"_s);
    sorted.setRows(rowsOf({u"b"_s, u"a"_s}));
    QCOMPARE(namesIn(sorted), QStringList({u"a"_s, u"b"_s}));
    // As many as before.
    sorted.setRows(rowsOf({u"d"_s, u"c"_s}));
    QCOMPARE(namesIn(sorted), QStringList({u"c"_s, u"d"_s}));
    QCOMPARE(sorted.listIndex(0), 1);
    QCOMPARE(reset.count(), 2);
    QCOMPARE(changed.count(), 2);
}

void TestSortedRows::indexOutside()
{
    SortedRows sorted;
    QCOMPARE(sorted.listIndex(0), -1);
    sorted.setRows(rowsOf({u"a"_s}));
    QCOMPARE(sorted.listIndex(-1), -1);
    QCOMPARE(sorted.listIndex(1), -1);
}

KVTEDITOR_TEST_MAIN(TestSortedRows)
#include "tst_SortedRows.moc"
