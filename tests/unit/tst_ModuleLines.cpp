#include "core/FileTools.h"
#include "core/ModuleLines.h"
#include "support/TestMain.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestModuleLines : public QObject
{
    Q_OBJECT

private slots:
    void line_data();
    void line();
    void headingsStandAlone();
    void noLineOutsideTheList();
    void theSameModulesTellNothing();
    void anotherListTakesOver();
    void emptyFieldsHaveNoLine_data();
    void emptyFieldsHaveNoLine();
    void manyModulesAndRows();
};

namespace {

QVariantList threeModules()
{
    return {FileTools::makeModuleEntry(u"Engine"_s, u"VIN1"_s, u"S1"_s, u"111"_s, {u"Cal"_s}, {u"E1"_s}),
            FileTools::makeModuleEntry(u"Gear"_s, u""_s, u""_s, {}, {u"A"_s, u"B"_s}, {u"G1"_s, u"G2"_s}),
            FileTools::makeModuleEntry(u"Brake"_s, {}, {}, {}, {}, {})};
}

QString lineText(const ModuleLines &lines, int number)
{
    const QVariantMap line = lines.line(number);
    if (line.value(u"heading"_s).toBool())
        return line.value(u"title"_s).toString();
    return line.value(u"title"_s).toString() + u'=' + line.value(u"value"_s).toString();
}

} // namespace

void TestModuleLines::line_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("expected");

    QTest::newRow("heading") << 0 << u"Engine"_s;
    QTest::newRow("vin") << 1 << u"VIN=VIN1"_s;
    QTest::newRow("serial") << 2 << u"Serial Number=S1"_s;
    QTest::newRow("main-os") << 3 << u"Main OS=111"_s;
    QTest::newRow("row") << 4 << u"Cal=E1"_s;
    QTest::newRow("second-heading") << 5 << u"Gear"_s;
    QTest::newRow("empty-main-os") << 6 << u"Main OS="_s;
    QTest::newRow("second-row") << 7 << u"A=G1"_s;
    QTest::newRow("last-row") << 8 << u"B=G2"_s;
    QTest::newRow("third-heading") << 9 << u"Brake"_s;
    QTest::newRow("last-line") << 10 << u"Main OS="_s;
}

void TestModuleLines::line()
{
    QFETCH(int, number);
    ModuleLines lines;
    lines.setModules(threeModules());
    QCOMPARE(lines.moduleCount(), 3);
    QCOMPARE(lines.count(), 11);
    QTEST(lineText(lines, number), "expected");
}

void TestModuleLines::headingsStandAlone()
{
    ModuleLines lines;
    lines.setModules(threeModules());
    QList<int> headings;
    for (int i = 0; i < lines.count(); ++i) {
        if (lines.line(i).value(u"heading"_s).toBool())
            headings.append(i);
    }
    QCOMPARE(headings, (QList<int>{0, 5, 9}));
}

void TestModuleLines::noLineOutsideTheList()
{
    ModuleLines lines;
    QCOMPARE(lines.count(), 0);
    QCOMPARE(lines.line(0), QVariantMap());
    lines.setModules(threeModules());
    QCOMPARE(lines.line(-1), QVariantMap());
    QCOMPARE(lines.line(11), QVariantMap());
}

void TestModuleLines::theSameModulesTellNothing()
{
    ModuleLines lines;
    lines.setModules(threeModules());
    const QSignalSpy changed(&lines, &ModuleLines::modulesChanged);
    lines.setModules(threeModules());
    QCOMPARE(changed.count(), 0);
}

void TestModuleLines::anotherListTakesOver()
{
    ModuleLines lines;
    lines.setModules(threeModules());
    const QSignalSpy changed(&lines, &ModuleLines::modulesChanged);
    lines.setModules(threeModules().mid(1));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(lines.count(), 6);
    QCOMPARE(lineText(lines, 3), u"B=G2"_s);
    lines.setModules({});
    QCOMPARE(lines.count(), 0);
}

void TestModuleLines::emptyFieldsHaveNoLine_data()
{
    QTest::addColumn<QString>("vin");
    QTest::addColumn<QString>("serial");
    QTest::addColumn<QStringList>("expected");

    const QString empty = u""_s;
    QTest::newRow("both-null") << QString() << QString() << QStringList{u"M"_s, u"Main OS=1"_s, u"A=a"_s};
    QTest::newRow("both-empty") << empty << empty << QStringList{u"M"_s, u"Main OS=1"_s, u"A=a"_s};
    QTest::newRow("serial-empty") << u"V"_s << empty
                                  << QStringList{u"M"_s, u"VIN=V"_s, u"Main OS=1"_s, u"A=a"_s};
    QTest::newRow("vin-empty") << empty << u"S"_s
                               << QStringList{u"M"_s, u"Serial Number=S"_s, u"Main OS=1"_s, u"A=a"_s};
}

void TestModuleLines::emptyFieldsHaveNoLine()
{
    QFETCH(QString, vin);
    QFETCH(QString, serial);
    ModuleLines lines;
    lines.setModules({FileTools::makeModuleEntry(u"M"_s, vin, serial, u"1"_s, {u"A"_s}, {u"a"_s})});
    QStringList texts;
    for (int number = 0; number < lines.count(); ++number)
        texts.append(lineText(lines, number));
    QTEST(texts, "expected");
}

void TestModuleLines::manyModulesAndRows()
{
    const QStringList values = QStringList(100'000, u"v"_s);
    QVariantList modules = QVariantList(100'000, FileTools::makeModuleEntry(u"M"_s, {}, {}, u"1"_s, {}, {}));
    modules.append(FileTools::makeModuleEntry(u"Long"_s, {}, {}, u"2"_s, values, values));
    ModuleLines lines;
    lines.setModules(modules);
    QCOMPARE(lines.count(), 300'002);
    QCOMPARE(lineText(lines, 199'999), u"Main OS=1"_s);
    QCOMPARE(lineText(lines, 200'000), u"Long"_s);
    QCOMPARE(lineText(lines, 300'001), u"v=v"_s);
}

KVTEDITOR_TEST_MAIN(TestModuleLines)
#include "tst_ModuleLines.moc"
