#include "StoredZip.h"
#include "support/TestMain.h"

class TestStoredZip : public QObject
{
    Q_OBJECT

private slots:
    void archiveOfOneEntry();
    void secondEntryIsFoundBehindTheFirst();
    void emptyArchive();
};

void TestStoredZip::archiveOfOneEntry()
{
    // 352441c2 is the CRC-32 of "abc".
    const QByteArray expected = QByteArray::fromHex("504b0304"
                                                    "0a00"
                                                    "0000"
                                                    "0000"
                                                    "0000"
                                                    "2100"
                                                    "c2412435"
                                                    "03000000"
                                                    "03000000"
                                                    "0100"
                                                    "0000")
        + "x"
          "abc"
        + QByteArray::fromHex("504b0102"
                              "0a00"
                              "0a00"
                              "0000"
                              "0000"
                              "0000"
                              "2100"
                              "c2412435"
                              "03000000"
                              "03000000"
                              "0100"
                              "0000"
                              "0000"
                              "0000"
                              "0000"
                              "00000000"
                              "00000000")
        + "x"
        + QByteArray::fromHex("504b0506"
                              "0000"
                              "0000"
                              "0100"
                              "0100"
                              "2f000000"
                              "22000000"
                              "0000");
    QCOMPARE(storedZip({{"x", "abc"}}).toHex(), expected.toHex());
}

void TestStoredZip::secondEntryIsFoundBehindTheFirst()
{
    const QByteArray zip = storedZip({{"first", "12345"}, {"second", QByteArray("\0\1", 2)}});
    // A header has 30 bytes, then name and content.
    const qsizetype second = 30 + 5 + 5;
    QCOMPARE(zip.mid(second, 4), QByteArray("PK\x03\x04"));
    QCOMPARE(zip.mid(second + 30, 8), QByteArray("second\0\1", 8));
    QCOMPARE(zip.count("PK\x01\x02"), 2);
    // Its line in the directory ends with the place, in front of the name.
    const qsizetype name = zip.lastIndexOf("second");
    QCOMPARE(zip.mid(name - 4, 4), QByteArray("\x28\0\0\0", 4));
}

void TestStoredZip::emptyArchive()
{
    QCOMPARE(storedZip({}), "PK\x05\x06" + QByteArray(18, '\0'));
}

KVTEDITOR_TEST_MAIN(TestStoredZip)
#include "tst_StoredZip.moc"
