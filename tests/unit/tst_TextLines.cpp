#include "core/TextLines.h"

#include "support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStringList>
#include <QStringListModel>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int lineRole = Qt::UserRole + 1;

QStringList linesOf(const TextLines &model)
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(); ++row)
        lines.append(model.data(model.index(row), lineRole).toString());
    return lines;
}

QList<qsizetype> lengthsOf(const QStringList &lines)
{
    QList<qsizetype> lengths;
    for (const QString &line : lines)
        lengths.append(line.size());
    return lengths;
}

} // namespace

class TestTextLines : public QObject
{
    Q_OBJECT

private slots:
    void emptyAtFirst();
    void oneRole();
    void lines_data();
    void lines();
    void longLine_data();
    void longLine();
    void megabyteInOneLine();
    void longestLineIsLookedThroughOnce();
    void manyLines();
    void textIsKeptWhole();
    void everyOtherTextResets();
    void sameTextChangesNothing();
    void hostileIndexOrRole();
};

void TestTextLines::emptyAtFirst()
{
    const TextLines model;
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.text(), QString());
}

void TestTextLines::oneRole()
{
    const TextLines model;
    QCOMPARE(model.roleNames(), (QHash<int, QByteArray>{{lineRole, "line"}}));
}

void TestTextLines::lines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty") << u""_s << QStringList();
    QTest::newRow("one") << u"a"_s << QStringList{u"a"_s};
    QTest::newRow("two") << u"a\nb"_s << QStringList{u"a"_s, u"b"_s};
    QTest::newRow("newline-at-the-end") << u"a\nb\n"_s << QStringList{u"a"_s, u"b"_s};
    QTest::newRow("newline-at-the-start") << u"\na"_s << QStringList{u""_s, u"a"_s};
    QTest::newRow("only-newline") << u"\n"_s << QStringList{u""_s};
    QTest::newRow("two-newlines") << u"\n\n"_s << QStringList{u""_s, u""_s};
    QTest::newRow("empty-lines-between") << u"a\n\n\nb"_s << QStringList{u"a"_s, u""_s, u""_s, u"b"_s};
    QTest::newRow("empty-line-at-the-end") << u"a\n\n"_s << QStringList{u"a"_s, u""_s};
    QTest::newRow("carriage-return-does-not-end-a-line")
        << u"a\rb\r\nc"_s << QStringList{u"a\rb\r"_s, u"c"_s};
    QTest::newRow("separators-do-not-end-a-line")
        << u"a\u2028b\u2029c\u0085d"_s << QStringList{u"a\u2028b\u2029c\u0085d"_s};
    QTest::newRow("nul") << QString(u"a\0b\nc"_s) << QStringList{u"a\0b"_s, u"c"_s};
    QTest::newRow("blanks-and-tabs") << u"  a\t\n "_s << QStringList{u"  a\t"_s, u" "_s};
    QTest::newRow("markup") << u"<img src='x'>\n&amp;"_s << QStringList{u"<img src='x'>"_s, u"&amp;"_s};
}

void TestTextLines::lines()
{
    QFETCH(QString, text);
    TextLines model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setProperty("text", text);
    QTEST(linesOf(model), "expected");
    QCOMPARE(model.property("text").toString(), text);
}

void TestTextLines::longLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QList<qsizetype>>("lengths");

    const auto x = [](qsizetype count) { return QString(count, u'x'); };
    const QString face = u"\U0001F600"_s;
    QTest::newRow("999") << x(999) << QList<qsizetype>{999};
    QTest::newRow("1000") << x(1000) << QList<qsizetype>{1000};
    QTest::newRow("1001") << x(1001) << QList<qsizetype>{1000, 1};
    QTest::newRow("2000") << x(2000) << QList<qsizetype>{1000, 1000};
    QTest::newRow("2001") << x(2001) << QList<qsizetype>{1000, 1000, 1};
    QTest::newRow("pair-ends-at-the-cut") << x(998) + face + x(5) << QList<qsizetype>{1000, 5};
    QTest::newRow("pair-across-the-cut") << x(999) + face + x(5) << QList<qsizetype>{999, 7};
    QTest::newRow("pair-after-the-cut") << x(1000) + face << QList<qsizetype>{1000, 2};
    QTest::newRow("pair-across-the-cut-at-the-end") << x(999) + face << QList<qsizetype>{999, 2};
    QTest::newRow("lone-half-at-the-cut") << x(999) + QChar(0xD83D) + x(5) << QList<qsizetype>{1000, 5};
    QTest::newRow("pairs-only") << face.repeated(1000) << QList<qsizetype>{1000, 1000};
    QTest::newRow("pairs-after-one") << x(1) + face.repeated(1000) << QList<qsizetype>{999, 1000, 2};
}

void TestTextLines::longLine()
{
    QFETCH(QString, line);
    QFETCH(QList<qsizetype>, lengths);
    TextLines model;
    model.setText(line);
    QCOMPARE(lengthsOf(linesOf(model)), lengths);
    QCOMPARE(linesOf(model).join(QString()), line);

    // The cuts count from the line's own start.
    model.setText(u"first\n"_s + line + u"\nlast\n"_s);
    QCOMPARE(lengthsOf(linesOf(model)), QList<qsizetype>{5} + lengths + QList<qsizetype>{4});
}

void TestTextLines::megabyteInOneLine()
{
    const QString face = u"\U0001F600"_s;
    // Lone halves too, as a hostile answer may hold them.
    const QString lone = QString(1, QChar(0xDC00)) + QString(1, QChar(0xD800));
    for (const QString &text : {QString(1'000'000, u'x'), u"x"_s + face.repeated(500'000),
                                lone.repeated(500'000), QString(1'000'000, QChar(0xDC00))}) {
        TextLines model;
        model.setText(text);
        const QStringList pieces = linesOf(model);
        const QList<qsizetype> lengths = lengthsOf(pieces);
        QVERIFY(*std::max_element(lengths.begin(), lengths.end()) <= 1000);
        QVERIFY(*std::min_element(lengths.begin(), lengths.end()) > 0);
        QVERIFY(pieces.size() <= 1002);
        QVERIFY(pieces.join(QString()) == text);
        for (qsizetype i = 1; i < pieces.size(); ++i)
            QVERIFY(!pieces.at(i - 1).back().isHighSurrogate() || !pieces.at(i).front().isLowSurrogate());
    }
}

// Looked through once for each piece, it would hold up the window for minutes.
void TestTextLines::longestLineIsLookedThroughOnce()
{
    constexpr qsizetype length = 64 * 1024 * 1024;
    TextLines model;
    model.setText(QString(length, u'x') + u"\nend"_s);
    QCOMPARE(model.rowCount(), int(length / 1000 + 2));
    QCOMPARE(model.data(model.index(model.rowCount() - 1), lineRole).toString(), u"end"_s);
}

void TestTextLines::manyLines()
{
    TextLines model;
    model.setText(u"\"a\": 1,\n"_s.repeated(100'000));
    QCOMPARE(model.rowCount(), 100'000);
    QCOMPARE(model.data(model.index(99'999), lineRole).toString(), u"\"a\": 1,"_s);
    model.setText(u"\n"_s.repeated(100'000));
    QCOMPARE(model.rowCount(), 100'000);
    QCOMPARE(model.data(model.index(50'000), lineRole).toString(), QString());
}

void TestTextLines::textIsKeptWhole()
{
    TextLines model;
    const QString text = QString(2500, u'x') + u"\r\n\n"_s;
    model.setText(text);
    QCOMPARE(model.text(), text);
}

void TestTextLines::everyOtherTextResets()
{
    TextLines model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy resets(&model, &TextLines::modelReset);
    QSignalSpy changes(&model, &TextLines::textChanged);
    int count = 0;
    for (const QString &text : {u"a\nb"_s, u"a\nc"_s, u"longer\nby\nfar"_s, u""_s, u"a\nb"_s}) {
        model.setText(text);
        ++count;
        QCOMPARE(resets.count(), count);
        QCOMPARE(changes.count(), count);
        QCOMPARE(linesOf(model).join(u'\n'), text);
    }
}

void TestTextLines::sameTextChangesNothing()
{
    TextLines model;
    model.setText(u"a\nb"_s);
    const QPersistentModelIndex second(model.index(1));
    QSignalSpy resets(&model, &TextLines::modelReset);
    QSignalSpy changes(&model, &TextLines::textChanged);
    model.setText(u"a\nb"_s);
    QCOMPARE(resets.count(), 0);
    QCOMPARE(changes.count(), 0);
    QVERIFY(second.isValid());
}

void TestTextLines::hostileIndexOrRole()
{
    TextLines model;
    model.setText(u"a\nb"_s);
    QVERIFY(!model.data({}, lineRole).isValid());
    QVERIFY(!model.data(model.index(2), lineRole).isValid());
    QVERIFY(!model.data(model.index(-1), lineRole).isValid());
    const QStringListModel longer({u"1"_s, u"2"_s, u"3"_s});
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"checkIndex|model"_s));
    QVERIFY(!model.data(longer.index(2), lineRole).isValid());
    for (const int role : {int(Qt::DisplayRole), int(Qt::UserRole), lineRole + 1, -1})
        QVERIFY(!model.data(model.index(0), role).isValid());
    QCOMPARE(model.rowCount(model.index(0)), 0);
}

KVTEDITOR_TEST_MAIN(TestTextLines)
#include "tst_TextLines.moc"
