#include "core/RowModel.h"

#include "support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStringListModel>
#include <QTest>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {

constexpr int rowRole = Qt::UserRole + 1;

/// One map for each letter.
QVariantList rowsOf(const QString &letters)
{
    QVariantList rows;
    for (const QChar letter : letters)
        rows.append(QVariantMap{{u"title"_s, QString(letter)}});
    return rows;
}

} // namespace

class TestRowModel : public QObject
{
    Q_OBJECT

private slots:
    void emptyAtFirst();
    void oneRole();
    void holdsTheRows();
    void sameLengthChangesOnlyWhatDiffers_data();
    void sameLengthChangesOnlyWhatDiffers();
    void changedRowsKeepTheirPersistentIndex();
    void otherLengthResets_data();
    void otherLengthResets();
    void resettingTakesEveryListAsAnother_data();
    void resettingTakesEveryListAsAnother();
    void theVerySameListIsNotAnnounced();
    void announcedOnceAfterwards_data();
    void announcedOnceAfterwards();
    void differsByOneMemberOfTheMap();
    void hostileIndexOrRole();
};

void TestRowModel::emptyAtFirst()
{
    const RowModel model;
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.rows(), QVariantList());
}

void TestRowModel::oneRole()
{
    const RowModel model;
    QCOMPARE(model.roleNames(), (QHash<int, QByteArray>{{rowRole, "row"}}));
}

void TestRowModel::holdsTheRows()
{
    RowModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setProperty("rows", rowsOf(u"abc"_s));
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(model.property("rows").toList(), rowsOf(u"abc"_s));
    QCOMPARE(model.data(model.index(1), rowRole), QVariant(QVariantMap{{u"title"_s, u"b"_s}}));
    model.setRows(rowsOf(u"axc"_s));
    QCOMPARE(model.data(model.index(1), rowRole), QVariant(QVariantMap{{u"title"_s, u"x"_s}}));
    model.setRows({});
    QCOMPARE(model.rowCount(), 0);
}

void TestRowModel::sameLengthChangesOnlyWhatDiffers_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QList<int>>("changed");

    QTest::newRow("nothing") << u"abcd"_s << u"abcd"_s << QList<int>();
    QTest::newRow("none-to-none") << u""_s << u""_s << QList<int>();
    QTest::newRow("first") << u"abcd"_s << u"xbcd"_s << QList<int>{0};
    QTest::newRow("last") << u"abcd"_s << u"abcx"_s << QList<int>{3};
    QTest::newRow("two-apart") << u"abcd"_s << u"axcx"_s << QList<int>{1, 3};
    QTest::newRow("all") << u"abcd"_s << u"dcba"_s << QList<int>{0, 1, 2, 3};
    QTest::newRow("only-row") << u"a"_s << u"b"_s << QList<int>{0};
}

void TestRowModel::sameLengthChangesOnlyWhatDiffers()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    RowModel model;
    model.setRows(rowsOf(before));
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy resets(&model, &RowModel::modelReset);
    QList<int> changed;
    connect(&model, &RowModel::dataChanged, this,
            [&](const QModelIndex &first, const QModelIndex &last, const QList<int> &roles) {
                QCOMPARE(roles, QList<int>{rowRole});
                for (int row = first.row(); row <= last.row(); ++row) {
                    changed.append(row);
                    // A view reads the row right away.
                    QCOMPARE(model.data(model.index(row), rowRole), rowsOf(after).at(row));
                }
            });
    model.setRows(rowsOf(after));
    QTEST(changed, "changed");
    QCOMPARE(resets.count(), 0);
    QCOMPARE(model.rows(), rowsOf(after));
}

void TestRowModel::changedRowsKeepTheirPersistentIndex()
{
    RowModel model;
    model.setRows(rowsOf(u"abc"_s));
    const QPersistentModelIndex second(model.index(1));
    model.setRows(rowsOf(u"axc"_s));
    QVERIFY(second.isValid());
    QCOMPARE(second.row(), 1);
    model.setRows(rowsOf(u"ax"_s));
    QVERIFY(!second.isValid());
}

void TestRowModel::otherLengthResets_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    QTest::newRow("first-rows") << u""_s << u"ab"_s;
    QTest::newRow("longer") << u"ab"_s << u"abc"_s;
    QTest::newRow("shorter") << u"abc"_s << u"ab"_s;
    QTest::newRow("emptied") << u"abc"_s << u""_s;
}

void TestRowModel::otherLengthResets()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    RowModel model;
    model.setRows(rowsOf(before));
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy resets(&model, &RowModel::modelReset);
    QSignalSpy changes(&model, &RowModel::dataChanged);
    model.setRows(rowsOf(after));
    QCOMPARE(resets.count(), 1);
    QCOMPARE(changes.count(), 0);
    QCOMPARE(model.rows(), rowsOf(after));
    QCOMPARE(model.rowCount(), int(after.size()));
}

void TestRowModel::resettingTakesEveryListAsAnother_data()
{
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("resets");

    QTest::newRow("one-row-differs") << u"abx"_s << 1;
    QTest::newRow("other-length") << u"ab"_s << 1;
    QTest::newRow("equal") << u"abc"_s << 0;
}

void TestRowModel::resettingTakesEveryListAsAnother()
{
    QFETCH(QString, after);
    RowModel model;
    QVERIFY(model.setProperty("resetting", true));
    model.setRows(rowsOf(u"abc"_s));
    QSignalSpy resets(&model, &RowModel::modelReset);
    QSignalSpy changes(&model, &RowModel::dataChanged);
    QSignalSpy announced(&model, &RowModel::rowsChanged);
    model.setRows(rowsOf(after));
    QTEST(static_cast<int>(resets.count()), "resets");
    QTEST(static_cast<int>(announced.count()), "resets");
    QCOMPARE(changes.count(), 0);
    QCOMPARE(model.rows(), rowsOf(after));
}

void TestRowModel::theVerySameListIsNotAnnounced()
{
    RowModel model;
    const QVariantList rows = rowsOf(u"abc"_s);
    model.setRows(rows);
    QSignalSpy announced(&model, &RowModel::rowsChanged);
    model.setRows(rows);
    QCOMPARE(announced.count(), 0);
}

void TestRowModel::announcedOnceAfterwards_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    QTest::newRow("other-length") << u"ab"_s << u"abc"_s;
    QTest::newRow("two-rows-differ") << u"abc"_s << u"xbx"_s;
}

void TestRowModel::announcedOnceAfterwards()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    RowModel model;
    model.setRows(rowsOf(before));
    QSignalSpy announced(&model, &RowModel::rowsChanged);
    connect(&model, &RowModel::rowsChanged, this, [&] { QCOMPARE(model.rows(), rowsOf(after)); });
    model.setRows(rowsOf(after));
    QCOMPARE(announced.count(), 1);
}

void TestRowModel::differsByOneMemberOfTheMap()
{
    RowModel model;
    const QVariantMap row{{u"label"_s, u"a"_s}, {u"selected"_s, true}};
    QVariantMap other = row;
    other.insert(u"selected"_s, false);
    model.setRows({row, row, row});
    QSignalSpy changes(&model, &RowModel::dataChanged);
    model.setRows({row, other, row});
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.first().first().toModelIndex().row(), 1);
}

void TestRowModel::hostileIndexOrRole()
{
    RowModel model;
    model.setRows(rowsOf(u"ab"_s));
    QVERIFY(!model.data({}, rowRole).isValid());
    QVERIFY(!model.data(model.index(2), rowRole).isValid());
    QVERIFY(!model.data(model.index(-1), rowRole).isValid());
    QVERIFY(!model.data(model.index(0, 1), rowRole).isValid());
    // An index that another list made, below this one's end.
    const QStringListModel longer({u"1"_s, u"2"_s, u"3"_s});
    QVERIFY(!model.data(longer.index(2), rowRole).isValid());
    for (const int role : {int(Qt::DisplayRole), int(Qt::UserRole), rowRole + 1, -1})
        QVERIFY(!model.data(model.index(0), role).isValid());
    QCOMPARE(model.rowCount(model.index(0)), 0);
}

KVTEDITOR_TEST_MAIN(TestRowModel)
#include "tst_RowModel.moc"
