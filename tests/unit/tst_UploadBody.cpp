#include "api/UploadBody.h"

#include "support/TestMain.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

class TestUploadBody : public QObject
{
    Q_OBJECT

private slots:
    void readsPiecesAsOne_data();
    void readsPiecesAsOne();
    void countsWhatIsLeft();
    void nothingFollowsTheEnd();
    void cannotBeRewound();
    void cannotBeWritten();
    void piecesAreShared();
};

void TestUploadBody::readsPiecesAsOne_data()
{
    QTest::addColumn<QList<QByteArray>>("pieces");
    QTest::addColumn<int>("step");
    QTest::addColumn<QList<QByteArray>>("reads");

    const QList<QByteArray> three{"abc", "de", "fghi"};
    QTest::newRow("byte-by-byte") << QList<QByteArray>{"ab", "c"} << 1 << QList<QByteArray>{"a", "b", "c"};
    QTest::newRow("within-and-across") << three << 2 << QList<QByteArray>{"ab", "cd", "ef", "gh", "i"};
    QTest::newRow("piece-ends-at-the-read") << three << 5 << QList<QByteArray>{"abcde", "fghi"};
    QTest::newRow("across-all") << three << 8 << QList<QByteArray>{"abcdefgh", "i"};
    QTest::newRow("exactly-all") << three << 9 << QList<QByteArray>{"abcdefghi"};
    QTest::newRow("more-than-there-is") << three << 100 << QList<QByteArray>{"abcdefghi"};
    QTest::newRow("empty-pieces") << QList<QByteArray>{"", "a", "", "", "b", ""} << 2
                                  << QList<QByteArray>{"ab"};
    QTest::newRow("no-pieces") << QList<QByteArray>() << 1 << QList<QByteArray>();
    QTest::newRow("nothing-in-pieces") << QList<QByteArray>{"", ""} << 1 << QList<QByteArray>();
}

void TestUploadBody::readsPiecesAsOne()
{
    QFETCH(QList<QByteArray>, pieces);
    QFETCH(int, step);
    UploadBody body(pieces);
    QVERIFY(body.isOpen());
    QList<QByteArray> reads;
    while (!body.atEnd()) {
        const QByteArray read = body.read(step);
        QVERIFY(!read.isEmpty());
        reads.append(read);
    }
    QTEST(reads, "reads");
}

void TestUploadBody::countsWhatIsLeft()
{
    UploadBody body({"abc", "", "de"});
    QCOMPARE(body.size(), 5);
    QCOMPARE(body.bytesAvailable(), 5);
    QVERIFY(!body.atEnd());
    QCOMPARE(body.read(4), QByteArray("abcd"));
    // The length that goes out ahead stays that of the whole.
    QCOMPARE(body.size(), 5);
    QCOMPARE(body.bytesAvailable(), 1);
    QVERIFY(!body.atEnd());
    QCOMPARE(body.read(1), QByteArray("e"));
    QCOMPARE(body.bytesAvailable(), 0);
    QVERIFY(body.atEnd());
}

void TestUploadBody::nothingFollowsTheEnd()
{
    UploadBody body({"ab"});
    QCOMPARE(body.readAll(), QByteArray("ab"));
    char byte = 'x';
    QCOMPARE(body.read(&byte, 1), -1);
    QCOMPARE(body.read(&byte, 0), 0);
    QCOMPARE(byte, 'x');
    QCOMPARE(body.readAll(), QByteArray());
}

void TestUploadBody::cannotBeRewound()
{
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    UploadBody body({"abc"});
    QVERIFY(body.isSequential());
    QCOMPARE(body.read(2), QByteArray("ab"));
    QVERIFY(!body.seek(0));
    QVERIFY(!body.reset());
    QCOMPARE(body.readAll(), QByteArray("c"));
    QVERIFY(!body.reset());
    QCOMPARE(body.bytesAvailable(), 0);
}

void TestUploadBody::cannotBeWritten()
{
    UploadBody body({"abc"});
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"ReadOnly device"_s));
    QCOMPARE(body.write("x"), -1);
    // Not even by whoever opens it anew.
    body.close();
    QVERIFY(body.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QCOMPARE(body.write("x"), -1);
    QCOMPARE(body.readAll(), QByteArray("abc"));
}

void TestUploadBody::piecesAreShared()
{
    const QByteArray piece(1 << 20, 'a');
    const UploadBody body({piece});
    QVERIFY(!piece.isDetached());
}

KVTEDITOR_TEST_MAIN(TestUploadBody)
#include "tst_UploadBody.moc"
