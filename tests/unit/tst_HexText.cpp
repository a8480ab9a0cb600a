#include "core/FileTools.h"
#include "core/HexText.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestHexText : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void cArrayIsWrappedAndReadsBack();
    void offsets();
    void pasted_data();
    void pasted();
    void targets_data();
    void targets();
};

void TestHexText::texts_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("hex");
    QTest::addColumn<QString>("ascii");
    QTest::addColumn<QString>("cArray");

    QTest::newRow("empty") << QByteArray() << u""_s << u""_s << u"const unsigned char bytes[0] = {\n};\n"_s;
    QTest::newRow("one") << QByteArray("\xAB") << u"AB"_s << u"."_s
                         << u"const unsigned char bytes[1] = {\n    0xAB,\n};\n"_s;
    QTest::newRow("edges")
        << QByteArray("\x00\x1F ~\x7F\xFF", 6) << u"00 1F 20 7E 7F FF"_s << u".. ~.."_s
        << u"const unsigned char bytes[6] = {\n    0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xFF,\n};\n"_s;
}

void TestHexText::texts()
{
    QFETCH(QByteArray, bytes);
    QTEST(hexText(bytes), "hex");
    QTEST(asciiText(bytes), "ascii");
    QTEST(cArrayText(bytes), "cArray");
}

void TestHexText::cArrayIsWrappedAndReadsBack()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    const QString text = cArrayText(bytes);
    QCOMPARE(text.count('\n'_L1), 18);
    QCOMPARE(pastedBytes(text), bytes);
    QCOMPARE(pastedBytes(hexText(bytes)), bytes);
}

void TestHexText::offsets()
{
    QCOMPARE(offsetText(0), u"0"_s);
    QCOMPARE(offsetText(0x1F3A7), u"1F3A7"_s);
}

void TestHexText::pasted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("hex") << u"de:ad be,EF\n"_s << QByteArray("\xDE\xAD\xBE\xEF");
    QTest::newRow("odd-digits-are-text") << u"ABC"_s << QByteArray("ABC");
    QTest::newRow("text-keeps-its-blanks") << u" truck \n"_s << QByteArray(" truck \n");
    QTest::newRow("blanks") << u"  "_s << QByteArray("  ");
    QTest::newRow("utf-8") << u"\u00E9"_s << QByteArray("\xC3\xA9");
    QTest::newRow("array") << u"{0x01,0x2,0xfF}"_s << QByteArray("\x01\x02\xFF");
    QTest::newRow("array-without-braces") << u"0x01 0x02"_s << QByteArray("\x01\x02");
    QTest::newRow("array-of-words-is-text") << u"0x0102"_s << QByteArray("0x0102");
    QTest::newRow("array-of-decimals-is-text") << u"{1, 2}"_s << QByteArray("{1, 2}");
    QTest::newRow("bare-prefix-is-text") << u"0x"_s << QByteArray("0x");
    QTest::newRow("array-in-a-sentence-is-text") << u"foo {0x41} bar"_s << QByteArray("foo {0x41} bar");
    QTest::newRow("array-declared") << u"char a[] = { 0x41, };"_s << QByteArray("A");
    QTest::newRow("array-not-closed-is-text") << u"{0x41"_s << QByteArray("{0x41");
    QTest::newRow("array-of-longer-numbers-is-text") << u"0x414"_s << QByteArray("0x414");
    QTest::newRow("fullwidth-digits-are-text") << u"\uFF11\uFF12"_s << u"\uFF11\uFF12"_s.toUtf8();
    QTest::newRow("plus-is-text") << u"0x+1"_s << QByteArray("0x+1");
    QTest::newRow("signed-is-text") << u"0x-1"_s << QByteArray("0x-1");
    QTest::newRow("null") << QString(QChar(0)) << QByteArray(1, '\0');
    QTest::newRow("half-a-pair") << QString(QChar(0xD800)) << QByteArray();
    QTest::newRow("pair") << QString::fromUcs4(U"\U0001F69A") << QByteArray("\xF0\x9F\x9A\x9A");
}

void TestHexText::pasted()
{
    QFETCH(QString, text);
    QTEST(pastedBytes(text), "bytes");
}

void TestHexText::targets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("length");

    const qint64 none = -1;
    QTest::newRow("offset") << u"1F3A7"_s << qint64(0x1F3A7) << qint64(0);
    QTest::newRow("length") << u"1F3A7:20"_s << qint64(0x1F3A7) << qint64(0x20);
    QTest::newRow("decimal-length") << u"0x10:20d"_s << qint64(0x10) << qint64(20);
    QTest::newRow("blanks") << u" +4 : e0 "_s << qint64(0x104) << qint64(0xE0);
    QTest::newRow("end") << u"end:1"_s << qint64(0x3FF) << qint64(1);
    QTest::newRow("no-length") << u"10:"_s << none << none;
    QTest::newRow("length-0") << u"10:0"_s << none << none;
    QTest::newRow("signed-length") << u"10:+5"_s << none << none;
    QTest::newRow("negative-length") << u"10:-5"_s << none << none;
    QTest::newRow("length-to-the-end") << u"10:end"_s << none << none;
    QTest::newRow("no-offset") << u":5"_s << none << none;
    QTest::newRow("two-lengths") << u"1:2:3"_s << none << none;
    QTest::newRow("empty") << QString() << none << none;
}

void TestHexText::targets()
{
    QFETCH(QString, text);
    QFETCH(qint64, offset);
    QFETCH(qint64, length);
    const auto target = FileTools::parseTarget(text, 0x100, 0x400);
    QCOMPARE(target.has_value(), offset >= 0);
    if (target)
        QCOMPARE(*target, (FileTools::Target{offset, length}));
}

KVTEDITOR_TEST_MAIN(TestHexText)
#include "tst_HexText.moc"
