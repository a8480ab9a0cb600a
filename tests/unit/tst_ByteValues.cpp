#include "core/ByteValues.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QTest>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Names = QStringList;

ByteValues::Row rowOf(QByteArrayView bytes, qsizetype offset, const QString &name)
{
    for (const ByteValues::Row &row : ByteValues::at(bytes, offset)) {
        if (row.name == name)
            return row;
    }
    return {};
}

std::optional<ByteSums> sumsOf(QByteArrayView bytes)
{
    return ByteSums::of(bytes, [] { return false; });
}

} // namespace

class TestByteValues : public QObject
{
    Q_OBJECT

private slots:
    void rows();
    void values_data();
    void values();
    void textsReadBack_data();
    void textsReadBack();
    void bytesOf_data();
    void bytesOf();
    void end_data();
    void end();
    void sums_data();
    void sums();
    void sums_doNotDependOnThePieces();
    void sums_givenUp();
};

void TestByteValues::rows()
{
    Names names;
    Names single;
    for (const ByteValues::Row &row : ByteValues::at({}, 0)) {
        names.append(row.name);
        if (row.single)
            single.append(row.name);
    }
    const Names expected{u"UInt8"_s,  u"Int8"_s,  u"UInt16"_s, u"Int16"_s,  u"UInt32"_s, u"Int32"_s,
                         u"UInt64"_s, u"Int64"_s, u"Float"_s,  u"Double"_s, u"Binary"_s, u"ASCII"_s};
    QCOMPARE(names, expected);
    QCOMPARE(single, Names({u"UInt8"_s, u"Int8"_s, u"Binary"_s, u"ASCII"_s}));
}

void TestByteValues::values_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("little");
    QTest::addColumn<QString>("big");

    const auto add = [](const char *name, const char *hex, const char *little, const char *big = "") {
        QTest::addRow("%s-%s", name, hex) << QString::fromLatin1(name) << QByteArray(hex)
                                          << QString::fromLatin1(little) << QString::fromLatin1(big);
    };
    add("UInt8", "00", "0");
    add("UInt8", "FF", "255");
    add("Int8", "7F", "127");
    add("Int8", "80", "-128");
    add("Int8", "FF", "-1");
    add("UInt16", "0102", "513", "258");
    add("UInt16", "FFFF", "65535", "65535");
    add("Int16", "0080", "-32768", "128");
    add("Int16", "7FFF", "-129", "32767");
    add("UInt32", "01020304", "67305985", "16909060");
    add("UInt32", "FFFFFFFF", "4294967295", "4294967295");
    add("Int32", "00000080", "-2147483648", "128");
    add("Int32", "7FFFFFFF", "-129", "2147483647");
    add("UInt64", "0102030405060708", "578437695752307201", "72623859790382856");
    add("UInt64", "FFFFFFFFFFFFFFFF", "18446744073709551615", "18446744073709551615");
    add("Int64", "0000000000000080", "-9223372036854775808", "128");
    add("Int64", "7FFFFFFFFFFFFFFF", "-129", "9223372036854775807");
    add("Float", "00000000", "0", "0");
    add("Float", "00000080", "0", "1.8e-43");
    add("Float", "0000803F", "1", "4.6006e-41");
    add("Float", "CDCCCC3D", "0.1", "-4.2949213e+08");
    add("Float", "3DCCCCCD", "-4.2949213e+08", "0.1");
    add("Float", "01000000", "1e-45", "2.3509887e-38");
    add("Float", "FFFF7F7F", "3.4028235e+38", "nan");
    add("Float", "0000807F", "inf", "4.6096e-41");
    add("Float", "FF800000", "4.6275e-41", "-inf");
    add("Float", "0000C07F", "nan", "6.9055e-41");
    add("Double", "0000000000000080", "0", "6.3e-322");
    add("Double", "9A9999999999B93F", "0.1", "-1.5423487136675799e-180");
    add("Double", "3FF0000000000000", "3.03865e-319", "1");
    add("Double", "FFFFFFFFFFFFEF7F", "1.7976931348623157e+308", "nan");
    add("Double", "0100000000000000", "5e-324", "7.291122019556398e-304");
    add("Double", "000000000000F0FF", "-inf", "3.04814e-319");
    add("Double", "7FF8000000000000", "3.143e-319", "nan");
    add("Binary", "00", "00000000");
    add("Binary", "A5", "10100101");
    add("Binary", "01", "00000001");
    add("ASCII", "1F", ".");
    add("ASCII", "20", " ");
    add("ASCII", "3C", "<");
    add("ASCII", "7E", "~");
    add("ASCII", "7F", ".");
    add("ASCII", "C4", ".");
}

void TestByteValues::values()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, hex);
    const QByteArray bytes = QByteArray::fromHex(hex);
    // Where they stand makes no difference.
    for (const qsizetype offset : {0, 1, 7}) {
        const ByteValues::Row row = rowOf(QByteArray(offset, '\x5a') + bytes, offset, name);
        QTEST(row.littleEndian, "little");
        QTEST(row.bigEndian, "big");
    }
}

void TestByteValues::textsReadBack_data()
{
    values_data();
}

// Not the bytes: -0 and 0 have the same text, and so have all that are no number.
void TestByteValues::textsReadBack()
{
    QFETCH(QString, name);
    QFETCH(QString, little);
    QFETCH(QString, big);
    const QList<ByteValues::Row> rows = ByteValues::at(QByteArray(8, '\0'), 0);
    const auto named = std::ranges::find(rows, name, &ByteValues::Row::name);
    const int row = static_cast<int>(named - rows.cbegin());
    for (const bool bigEndian : {false, true}) {
        const QString text = bigEndian && !big.isEmpty() ? big : little;
        const auto bytes = ByteValues::bytesOf(row, text, bigEndian);
        QVERIFY2(bytes, qPrintable(text));
        const ByteValues::Row read = rowOf(*bytes, 0, name);
        QCOMPARE(bigEndian && !read.single ? read.bigEndian : read.littleEndian, text);
    }
}

void TestByteValues::bytesOf_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("little");
    QTest::addColumn<QString>("big");

    // "" for what is refused.
    const auto add = [](const char *name, int row, const QString &text, const char *little = "",
                        const char *big = "") {
        QTest::newRow(name) << row << text << QString::fromLatin1(little) << QString::fromLatin1(big);
    };
    add("byte", 0, u"200"_s, "c8", "c8");
    add("too-large-for-a-byte", 0, u"256"_s);
    add("negative-without-a-sign", 0, u"-1"_s);
    add("blanks-around", 0, u" 7 "_s, "07", "07");
    add("hex", 2, u"0x1F"_s, "1f00", "001f");
    add("hex-in-capitals", 2, u"0X1f"_s, "1f00", "001f");
    add("zero-in-front", 2, u"010"_s, "0a00", "000a");
    add("signed", 3, u"-2"_s, "feff", "fffe");
    add("too-small", 3, u"-32769"_s);
    add("fraction", 4, u"1.5"_s);
    add("largest", 6, u"18446744073709551615"_s, "ffffffffffffffff", "ffffffffffffffff");
    add("beyond-the-largest", 6, u"18446744073709551616"_s);
    add("smallest", 7, u"-9223372036854775808"_s, "0000000000000080", "8000000000000000");
    add("float", 8, u"1.5"_s, "0000c03f", "3fc00000");
    add("float-too-large", 8, u"1e39"_s);
    add("float-with-comma", 8, u"1,5"_s);
    add("double", 9, u"-2e3"_s, "0000000000409fc0", "c09f400000000000");
    add("binary", 10, u"101"_s, "05", "05");
    add("binary-too-long", 10, u"100000000"_s);
    add("binary-other-digit", 10, u"2"_s);
    add("character", 11, u"~"_s, "7e", "7e");
    add("blank", 11, u" "_s, "20", "20");
    add("not-printable", 11, u"\t"_s);
    add("not-ascii", 11, u"\u00e4"_s);
    add("two-characters", 11, u"ab"_s);
    add("empty", 0, QString());
    add("letters", 2, u"abc"_s);
    add("row-before", -1, u"1"_s);
    add("row-behind", 12, u"1"_s);
}

void TestByteValues::bytesOf()
{
    QFETCH(int, row);
    QFETCH(QString, text);
    const auto hexOf = [&](bool bigEndian) {
        const auto bytes = ByteValues::bytesOf(row, text, bigEndian);
        return bytes ? QString::fromLatin1(bytes->toHex()) : QString();
    };
    QTEST(hexOf(false), "little");
    QTEST(hexOf(true), "big");
}

void TestByteValues::end_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<qsizetype>("offset");
    QTest::addColumn<Names>("known");

    const Names bytes{u"UInt8"_s, u"Int8"_s, u"Binary"_s, u"ASCII"_s};
    const Names to16 = bytes + Names{u"UInt16"_s, u"Int16"_s};
    const Names to32 = to16 + Names{u"UInt32"_s, u"Int32"_s, u"Float"_s};
    const Names all = to32 + Names{u"UInt64"_s, u"Int64"_s, u"Double"_s};
    QTest::newRow("empty") << 0 << qsizetype(0) << Names();
    QTest::newRow("before") << 20 << qsizetype(-1) << Names();
    QTest::newRow("past-end") << 20 << qsizetype(20) << Names();
    QTest::newRow("1-left") << 20 << qsizetype(19) << bytes;
    QTest::newRow("2-left") << 20 << qsizetype(18) << to16;
    QTest::newRow("3-left") << 20 << qsizetype(17) << to16;
    QTest::newRow("4-left") << 20 << qsizetype(16) << to32;
    QTest::newRow("7-left") << 20 << qsizetype(13) << to32;
    QTest::newRow("8-left") << 20 << qsizetype(12) << all;
    QTest::newRow("highest") << 20 << std::numeric_limits<qsizetype>::max() << Names();
}

void TestByteValues::end()
{
    QFETCH(int, size);
    QFETCH(qsizetype, offset);
    QFETCH(Names, known);
    for (const ByteValues::Row &row : ByteValues::at(QByteArray(size, 'x'), offset)) {
        QCOMPARE(!row.littleEndian.isEmpty(), known.contains(row.name));
        QCOMPARE(!row.bigEndian.isEmpty(), known.contains(row.name) && !row.single);
    }
}

void TestByteValues::sums_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("sum");
    QTest::addColumn<quint32>("crc32");
    QTest::addColumn<QByteArray>("sha256");

    QTest::newRow("empty") << QByteArray() << 0U << 0U
                           << QByteArray("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    QTest::newRow("abc") << QByteArray("abc") << 294U << 0x352441C2U
                         << QByteArray("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    QTest::newRow("digits") << QByteArray("123456789") << 477U << 0xCBF43926U
                            << QByteArray("15e2b0d3c33891ebb0f1ef609ec419420c20e320ce94c65fbc8c3312448eb225");
    QTest::newRow("million-a") << QByteArray(1'000'000, 'a') << 97'000'000U << 0xDC25BFBCU
                               << QByteArray(
                                      "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    // 16 843 010 bytes of FF add up to 2^32 + 254.
    QTest::newRow("passes-2^32") << QByteArray(16'843'010, '\xff') << 254U << 0U << QByteArray();
}

void TestByteValues::sums()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, sha256);
    const std::optional<ByteSums> sums = sumsOf(bytes);
    QVERIFY(sums);
    QTEST(sums->sum, "sum");
    if (sha256.isEmpty())
        return;
    QTEST(sums->crc32, "crc32");
    QCOMPARE(sums->sha256.toHex(), sha256);
}

void TestByteValues::sums_doNotDependOnThePieces()
{
    for (const qsizetype size : {ByteSums::pieceSize - 1, ByteSums::pieceSize, ByteSums::pieceSize + 1}) {
        QByteArray bytes(size, '\1');
        bytes.back() = '\2';
        int asked = 0;
        const auto sums = ByteSums::of(bytes, [&asked] { return ++asked < 0; });
        QVERIFY(sums);
        QCOMPARE(asked, size > ByteSums::pieceSize ? 2 : 1);
        QCOMPARE(sums->sum, quint32(size + 1));
        QCOMPARE(sums->sha256, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    }
}

void TestByteValues::sums_givenUp()
{
    int asked = 0;
    QVERIFY(!ByteSums::of(QByteArray(3 * ByteSums::pieceSize, 'x'), [&asked] { return ++asked == 2; }));
    QCOMPARE(asked, 2);
}

KVTEDITOR_TEST_MAIN(TestByteValues)
#include "tst_ByteValues.moc"
