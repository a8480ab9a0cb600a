#include "core/FileTools.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestOsRules : public QObject
{
    Q_OBJECT

private slots:
    void isKvtFile_data();
    void isKvtFile();
    void isCumminsStyleOs_data();
    void isCumminsStyleOs();
    void isWeakNumericOs_data();
    void isWeakNumericOs();
    void osTokenFromName_data();
    void osTokenFromName();
    void yearFromName_data();
    void yearFromName();
    void makeModuleEntry_data();
    void makeModuleEntry();
    void sanitizeName_data();
    void sanitizeName();
    void extractKvtIdentifiers_findsNothing();
    void groupGmOsCandidates_clearsAndRefuses();
};

void TestOsRules::isKvtFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("expected");

    QTest::newRow("lower-case") << u"a.kvt"_s << true;
    QTest::newRow("upper-case") << u"A.KVT"_s << true;
    QTest::newRow("mixed-case") << u"a.KvT"_s << true;
    QTest::newRow("path") << u"/b.ctz/a.kvt"_s << true;
    QTest::newRow("nothing-but-suffix") << u".kvt"_s << true;
    QTest::newRow("ctz") << u"a.ctz"_s << false;
    QTest::newRow("kvt-inside") << u"a.kvt.bin"_s << false;
    QTest::newRow("no-dot") << u"akvt"_s << false;
    QTest::newRow("blank-after") << u"a.kvt "_s << false;
    QTest::newRow("empty") << QString() << false;
}

void TestOsRules::isKvtFile()
{
    QFETCH(QString, name);
    QTEST(FileTools::isKvtFile(name), "expected");
}

void TestOsRules::isCumminsStyleOs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    QTest::newRow("digits-first") << u"12345678AB"_s << true;
    QTest::newRow("letter-first") << u"A1234567BC"_s << true;
    QTest::newRow("lower-case") << u"a1234567bc"_s << true;
    QTest::newRow("lower-case-end") << u"12345678ab"_s << true;
    QTest::newRow("ends-of-alphabet") << u"Z9999999AZ"_s << true;
    QTest::newRow("eighth-is-letter") << u"1234567ABC"_s << false;
    QTest::newRow("second-is-letter") << u"AB234567CD"_s << false;
    QTest::newRow("one-letter-at-end") << u"123456789A"_s << false;
    QTest::newRow("digit-at-end") << u"12345678A1"_s << false;
    QTest::newRow("ten-digits") << u"1234567890"_s << false;
    QTest::newRow("nine-characters") << u"1234567AB"_s << false;
    QTest::newRow("eleven-characters") << u"123456789AB"_s << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("blank-in-front") << u" 2345678AB"_s << false;
    QTest::newRow("blank-after") << u"12345678A "_s << false;
    QTest::newRow("punctuation-in-front") << u"@1234567AB"_s << false;
    QTest::newRow("bracket-at-end") << u"12345678A["_s << false;
    QTest::newRow("full-width-digits") << u"\uff11\uff12\uff13\uff14\uff15\uff16\uff17\uff18AB"_s << true;
    QTest::newRow("arabic-indic-digits") << u"A\u0661\u0662\u0663\u0664\u0665\u0666\u0667BC"_s << true;
    QTest::newRow("superscript-is-not-a-digit") << u"1234567\u00b2AB"_s << false;
    QTest::newRow("full-width-letters") << u"12345678\uff21\uff22"_s << false;
    QTest::newRow("accented-letter") << u"12345678A\u00e9"_s << false;
    QTest::newRow("cyrillic-letter") << u"\u04101234567BC"_s << false;
    QTest::newRow("length-before-upper-casing") << u"12345678\u00df"_s << false;
    QTest::newRow("dotless-i-upper-cases-to-ascii") << u"12345678A\u0131"_s << true;
}

void TestOsRules::isCumminsStyleOs()
{
    QFETCH(QString, text);
    QTEST(FileTools::isCumminsStyleOs(text), "expected");
}

void TestOsRules::isWeakNumericOs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    QTest::newRow("seven-digits") << u"1234567"_s << true;
    QTest::newRow("eight-digits") << u"12345678"_s << true;
    QTest::newRow("nine-digits") << u"123456789"_s << true;
    QTest::newRow("six-digits") << u"123456"_s << false;
    QTest::newRow("ten-digits") << u"1234567890"_s << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("blank-after") << u"12345678 "_s << false;
    QTest::newRow("blank-in-front") << u" 12345678"_s << false;
    QTest::newRow("letter-inside") << u"1234x678"_s << false;
    QTest::newRow("sign") << u"-1234567"_s << false;
    QTest::newRow("full-width-digits") << u"\uff11\uff12\uff13\uff14\uff15\uff16\uff17"_s << true;
    QTest::newRow("superscript") << u"123456\u00b2"_s << false;
}

void TestOsRules::isWeakNumericOs()
{
    QFETCH(QString, text);
    QTEST(FileTools::isWeakNumericOs(text), "expected");
}

void TestOsRules::osTokenFromName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("token");

    QTest::newRow("run-of-five") << u"abc12.kvt"_s << QString();
    QTest::newRow("run-of-six") << u"abc123.kvt"_s << u"ABC123"_s;
    QTest::newRow("number-between-underscores") << u"e38_12654321_stock.kvt"_s << u"12654321"_s;
    QTest::newRow("only-short-runs") << u"my-ecu-file.kvt"_s << QString();
    QTest::newRow("word") << u"SILVERADO.kvt"_s << u"SILVERADO"_s;
    QTest::newRow("word-before-number") << u"2015_SILVERADO_12345678.kvt"_s << u"SILVERADO"_s;
    QTest::newRow("upper-cased") << u"a1234567bc.kvt"_s << u"A1234567BC"_s;
    QTest::newRow("whole-run") << u"12345678901234567890"_s << u"12345678901234567890"_s;
    QTest::newRow("long-suffix") << u"a.backup"_s << u"BACKUP"_s;
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("accent-ends-run") << u"abc\u00e9def1234567"_s << u"DEF1234567"_s;
    QTest::newRow("full-width-digits-end-run") << u"12345\uff16\uff17"_s << QString();
    QTest::newRow("sharp-s-becomes-two-letters") << u"stra\u00dfe"_s << u"STRASSE"_s;
}

void TestOsRules::osTokenFromName()
{
    QFETCH(QString, name);
    QTEST(FileTools::osTokenFromName(name), "token");
}

void TestOsRules::yearFromName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("year");

    QTest::newRow("last-century") << u"tune_1999.kvt"_s << u"1999"_s;
    QTest::newRow("first-of-all") << u"1900"_s << u"1900"_s;
    QTest::newRow("last-of-all") << u"2099"_s << u"2099"_s;
    QTest::newRow("next-century") << u"tune_2105.kvt"_s << QString();
    QTest::newRow("year-1899") << u"tune_1899.kvt"_s << QString();
    QTest::newRow("between-letters") << u"x1920y"_s << u"1920"_s;
    QTest::newRow("first-of-two") << u"2019_2020.kvt"_s << u"2019"_s;
    QTest::newRow("inside-a-number") << u"A123201999"_s << u"2019"_s;
    QTest::newRow("earlier-though-unlikely") << u"12006543_2015.kvt"_s << u"2006"_s;
    QTest::newRow("three-digits") << u"tune_199.kvt"_s << QString();
    QTest::newRow("digits-apart") << u"20 15, 20-16"_s << QString();
    QTest::newRow("in-the-suffix") << u"tune.2015"_s << u"2015"_s;
    QTest::newRow("full-width-digits") << u"tune_20\uff11\uff15.kvt"_s << QString();
    QTest::newRow("arabic-indic-digits") << u"tune_\u0662\u0660\u0661\u0665.kvt"_s << QString();
    QTest::newRow("full-width-before-ascii") << u"\uff12\uff10152016"_s << u"2016"_s;
    QTest::newRow("line-feed-in-front") << u"a\n2015"_s << u"2015"_s;
    QTest::newRow("empty") << QString() << QString();
}

void TestOsRules::yearFromName()
{
    QFETCH(QString, name);
    QTEST(FileTools::yearFromName(name), "year");
}

void TestOsRules::makeModuleEntry_data()
{
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QVariantList>("rows");

    const auto row = [](const QString &label, const QString &value) {
        return QVariant(QVariantMap{{u"label"_s, label}, {u"value"_s, value}});
    };
    const QStringList two{u"Cal ID"_s, u"Hardware"_s};
    QTest::newRow("none") << QStringList() << QStringList() << QVariantList();
    QTest::newRow("all") << two << QStringList{u"1"_s, u"2"_s}
                         << QVariantList{row(u"Cal ID"_s, u"1"_s), row(u"Hardware"_s, u"2"_s)};
    QTest::newRow("empty-value-dropped")
        << two << QStringList{QString(), u"123"_s} << QVariantList{row(u"Hardware"_s, u"123"_s)};
    QTest::newRow("blank-value-kept")
        << two << QStringList{u" "_s, QString()} << QVariantList{row(u"Cal ID"_s, u" "_s)};
    QTest::newRow("empty-label-kept")
        << QStringList{QString()} << QStringList{u"1"_s} << QVariantList{row(QString(), u"1"_s)};
    QTest::newRow("labels-longer") << QStringList{u"a"_s, u"b"_s, u"c"_s} << QStringList{u"1"_s, u"2"_s}
                                   << QVariantList{row(u"a"_s, u"1"_s), row(u"b"_s, u"2"_s)};
    QTest::newRow("values-longer") << QStringList{u"a"_s} << QStringList{u"1"_s, u"2"_s}
                                   << QVariantList{row(u"a"_s, u"1"_s)};
    QTest::newRow("same-label-twice") << QStringList{u"a"_s, u"a"_s} << QStringList{u"1"_s, u"1"_s}
                                      << QVariantList{row(u"a"_s, u"1"_s), row(u"a"_s, u"1"_s)};
}

void TestOsRules::makeModuleEntry()
{
    QFETCH(QStringList, labels);
    QFETCH(QStringList, values);
    QFETCH(QVariantList, rows);
    const QVariantMap entry =
        FileTools::makeModuleEntry(u"Engine"_s, u"VIN1"_s, QString(), u"12345678"_s, labels, values);
    QCOMPARE(entry.keys(), QStringList({u"mainOs"_s, u"rows"_s, u"serial"_s, u"title"_s, u"vin"_s}));
    QCOMPARE(entry.value(u"title"_s), QVariant(u"Engine"_s));
    QCOMPARE(entry.value(u"vin"_s), QVariant(u"VIN1"_s));
    QCOMPARE(entry.value(u"serial"_s).toString(), QString());
    QCOMPARE(entry.value(u"serial"_s).metaType(), QMetaType::fromType<QString>());
    QCOMPARE(entry.value(u"mainOs"_s), QVariant(u"12345678"_s));
    QCOMPARE(entry.value(u"rows"_s).toList(), rows);
}

void TestOsRules::sanitizeName_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("slash-and-colon") << u"a/b:c"_s << u"a_b_c"_s;
    QTest::newRow("each-of-nine") << uR"(a\b/c:d*e?f"g<h>i|j)"_s << u"a_b_c_d_e_f_g_h_i_j"_s;
    QTest::newRow("one-for-each") << u"***"_s << u"___"_s;
    QTest::newRow("blank") << u"  "_s << u"file"_s;
    QTest::newRow("white-space") << u"\t\n"_s << u"file"_s;
    QTest::newRow("empty") << QString() << u"file"_s;
    QTest::newRow("outer-blanks-kept") << u" x "_s << u" x "_s;
    QTest::newRow("dot") << u"."_s << u"."_s;
    QTest::newRow("dots") << u".."_s << u".."_s;
    QTest::newRow("dots-and-slash") << u"../x"_s << u".._x"_s;
    QTest::newRow("control-characters-kept") << u"a\tb\nc\u0001"_s << u"a\tb\nc\u0001"_s;
    QTest::newRow("accent-kept") << u"caf\u00e9"_s << u"caf\u00e9"_s;
    QTest::newRow("other-punctuation-kept") << u"a&b#c%d'e"_s << u"a&b#c%d'e"_s;
    QTest::newRow("half-a-character")
        << u"../"_s + QChar(0xD800) + u"/x"_s << u".._"_s + QChar(0xD800) + u"_x"_s;
    QTest::newRow("nul-kept") << QString(QChar(u'\0')) + u"/"_s << QString(QChar(u'\0')) + u"_"_s;
}

void TestOsRules::sanitizeName()
{
    QFETCH(QString, text);
    QTEST(FileTools::sanitizeName(text), "expected");
}

void TestOsRules::extractKvtIdentifiers_findsNothing()
{
    QCOMPARE(FileTools::extractKvtIdentifiers({}), QVariantMap());
    QCOMPARE(FileTools::extractKvtIdentifiers("VIN=1GCHK23D46F123456 OS=12345678"), QVariantMap());
}

void TestOsRules::groupGmOsCandidates_clearsAndRefuses()
{
    const QStringList candidates{u"12345678"_s, u"87654321"_s};
    QStringList first{u"old"_s};
    QStringList second{u"old"_s, u"older"_s};
    QVERIFY(!FileTools::groupGmOsCandidates(candidates, &first, &second));
    QCOMPARE(first, QStringList());
    QCOMPARE(second, QStringList());
    first = {u"kept for later"_s};
    QVERIFY(!FileTools::groupGmOsCandidates({}, nullptr, nullptr));
    QVERIFY(!FileTools::groupGmOsCandidates(candidates, &first, nullptr));
    QCOMPARE(first, QStringList());
}

KVTEDITOR_TEST_MAIN(TestOsRules)
#include "tst_OsRules.moc"
