#include "core/HexCompare.h"
#include "core/HexModel.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestHexCompare : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void text_data();
    void text();
    void places();
    void rows();
    void map();
    void editsAreFollowed();
    void editWhileComparing();
    void anotherFileWhileComparing();
    void openingAFileComparesAnew();
    void stops();
    void stopsWhileReading();
    void unreadableFileKeepsTheEarlier();
    void destroyedWhileComparing();

private:
    QString write(const QString &name, const QByteArray &bytes);
    void compareWith(const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<HexModel> m_model;
    std::unique_ptr<HexCompare> m_compare;
};

void TestHexCompare::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_compare.reset();
    m_model = std::make_unique<HexModel>();
    m_compare = std::make_unique<HexCompare>(m_model.get());
}

QString TestHexCompare::write(const QString &name, const QByteArray &bytes)
{
    QFile file(m_folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("a file could not be written");
    return file.fileName();
}

void TestHexCompare::compareWith(const QByteArray &bytes)
{
    QSignalSpy finished(m_compare.get(), &HexCompare::finished);
    m_compare->start(write(u"other.bin"_s, bytes));
    QVERIFY2(finished.wait(), "the comparison did not end");
    QVERIFY(!m_compare->isBusy());
}

void TestHexCompare::text_data()
{
    QTest::addColumn<QByteArray>("ours");
    QTest::addColumn<QByteArray>("theirs");
    QTest::addColumn<QString>("text");

    QTest::newRow("equal") << QByteArray("abc") << QByteArray("abc") << u"No difference"_s;
    QTest::newRow("one") << QByteArray("abc") << QByteArray("abX") << u"1 byte differs in 1 place"_s;
    QTest::newRow("run") << QByteArray("abc") << QByteArray("aXX") << u"2 bytes differ in 1 place"_s;
    QTest::newRow("two") << QByteArray("abc") << QByteArray("XbX") << u"2 bytes differ in 2 places"_s;
    QTest::newRow("longer") << QByteArray("abc") << QByteArray("abcd")
                            << u"No difference; the other file is 1 byte longer"_s;
    QTest::newRow("shorter") << QByteArray("abcd") << QByteArray("X")
                             << u"1 byte differs in 1 place; the other file is 3 bytes shorter"_s;
}

void TestHexCompare::text()
{
    QFETCH(QByteArray, ours);
    QFETCH(QByteArray, theirs);
    m_model->setBytes(ours);
    QVERIFY(m_compare->text().isEmpty());
    compareWith(theirs);
    QTEST(m_compare->text(), "text");
    QCOMPARE(m_compare->name(), u"other.bin"_s);
    QVERIFY(m_compare->isActive());
}

void TestHexCompare::places()
{
    m_model->setBytes(QByteArray(100, 'a'));
    QByteArray other(100, 'a');
    other[10] = other[11] = other[50] = 'b';
    compareWith(other);
    QCOMPARE(m_compare->differingBytes(), 3);
    QCOMPARE(m_compare->places(), 2);
    QCOMPARE(m_compare->place(1), (ByteRange{50, 1}));
    QCOMPARE(m_compare->placeText(0), u"0000000A  2 bytes"_s);
    QCOMPARE(m_compare->placeText(1), u"00000032  1 byte"_s);
    QCOMPARE(m_compare->placeText(2), QString());
    QCOMPARE(m_compare->placeAt(11), (ByteRange{10, 2}));
    QCOMPARE(m_compare->next(10), (ByteRange{50, 1}));
    QCOMPARE(m_compare->previous(10), (ByteRange{50, 1}));
    QCOMPARE(m_compare->numberAt(50), 2);
}

void TestHexCompare::rows()
{
    m_model->setBytes(QByteArray(100, 'a'));
    compareWith("0123456789abcdefXY");
    QCOMPARE(m_compare->characters(0), u"0123456789abcdef"_s);
    QCOMPARE(m_compare->digits(1), u"58 59"_s);
    QCOMPARE(m_compare->digits(2), QString());
    QCOMPARE(m_compare->digits(-1), QString());
    QCOMPARE(m_compare->characters(134'217'727), QString());
}

void TestHexCompare::map()
{
    m_model->setBytes(QByteArray(160, 'a'));
    QByteArray other(160, 'a');
    other[0] = other[159] = 'b';
    compareWith(other);
    QCOMPARE(m_compare->map(10), (QVariantList{0, 1, 9, 10}));
}

void TestHexCompare::editsAreFollowed()
{
    m_model->setBytes(QByteArray(100, 'a'));
    compareWith(QByteArray(100, 'a'));
    QSignalSpy changed(m_compare.get(), &HexCompare::changed);
    QVERIFY(m_model->applyPatch(20, "bb"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_compare->text(), u"2 bytes differ in 1 place"_s);
    QVERIFY(m_model->applyPatch(20, "a"));
    QCOMPARE(m_compare->text(), u"1 byte differs in 1 place"_s);
}

void TestHexCompare::editWhileComparing()
{
    const int size = 20'000'000;
    m_model->setBytes(QByteArray(size, 'a'));
    QSignalSpy finished(m_compare.get(), &HexCompare::finished);
    QString text;
    bool isKept = false;
    // Ahead of the comparison's own events, as soon as the other file is read: later, all may be done.
    const auto edit = [&] {
        text = m_compare->text();
        // It begins, and lets go of the buffer.
        QCoreApplication::sendPostedEvents(m_compare.get());
        const void *const data = m_model->bytes().constData();
        m_model->applyPatch(5, "b");
        isKept = static_cast<const void *>(m_model->bytes().constData()) == data;
    };
    connect(m_compare.get(), &HexCompare::otherChanged, this, edit,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    m_compare->start(write(u"other.bin"_s, QByteArray(size, 'a')));
    QVERIFY(m_compare->isBusy());
    QVERIFY2(finished.wait(), "the comparison did not end");
    QCOMPARE(m_compare->text(), u"1 byte differs in 1 place"_s);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(text, u"Comparing \u2026"_s);
    QVERIFY(isKept);
}

void TestHexCompare::anotherFileWhileComparing()
{
    m_model->setBytes(QByteArray(20'000'000, 'a'));
    QSignalSpy finished(m_compare.get(), &HexCompare::finished);
    m_compare->start(write(u"first.bin"_s, QByteArray(20'000'000, 'b')));
    m_compare->start(write(u"second.bin"_s, "b"));
    QVERIFY2(finished.wait(), "the comparison did not end");
    QCOMPARE(m_compare->name(), u"second.bin"_s);
    QCOMPARE(m_compare->differingBytes(), 1);
}

void TestHexCompare::openingAFileComparesAnew()
{
    m_model->setBytes(QByteArray(100, 'a'));
    compareWith(QByteArray(100, 'a'));
    QSignalSpy changed(m_compare.get(), &HexCompare::changed);
    m_model->setBytes(QByteArray(50, 'b'));
    QVERIFY(m_compare->isBusy());
    WAIT_COMPARE(m_compare->text(), u"50 bytes differ in 1 place; the other file is 50 bytes longer"_s);
    m_model->setBytes({});
    WAIT_COMPARE(m_compare->text(), u"No difference; the other file is 100 bytes longer"_s);
}

void TestHexCompare::stops()
{
    m_model->setBytes(QByteArray(100, 'a'));
    compareWith(QByteArray(100, 'b'));
    QSignalSpy others(m_compare.get(), &HexCompare::otherChanged);
    m_compare->stop();
    QCOMPARE(others.count(), 1);
    QVERIFY(!m_compare->isActive());
    QVERIFY(!m_compare->isBusy());
    QCOMPARE(m_compare->text(), QString());
    QCOMPARE(m_compare->places(), 0);
    QCOMPARE(m_compare->bytes(), QByteArray());
    QVERIFY(m_model->applyPatch(0, "x"));
    QCOMPARE(m_compare->differingBytes(), 0);
}

void TestHexCompare::stopsWhileReading()
{
    m_model->setBytes(QByteArray(100, 'a'));
    m_compare->start(write(u"other.bin"_s, QByteArray(1'000'000, 'b')));
    m_compare->stop();
    QVERIFY(!m_compare->isBusy());
    compareWith("b");
    QCOMPARE(m_compare->differingBytes(), 1);
}

void TestHexCompare::unreadableFileKeepsTheEarlier()
{
    m_model->setBytes(QByteArray(100, 'a'));
    compareWith(QByteArray(100, 'b'));
    QSignalSpy failed(m_compare.get(), &HexCompare::failed);
    m_compare->start(m_folder->filePath(u"missing.bin"_s));
    QVERIFY2(failed.wait(), "nothing was said of a missing file");
    QCOMPARE(failed.first().first().toString(), u"No such file or directory"_s);
    m_compare->start(write(u"empty.bin"_s, {}));
    QVERIFY2(failed.wait(), "nothing was said of an empty file");
    QCOMPARE(failed.last().first().toString(), u"The other file is empty."_s);
    QCOMPARE(m_compare->name(), u"other.bin"_s);
    QCOMPARE(m_compare->differingBytes(), 100);
}

void TestHexCompare::destroyedWhileComparing()
{
    m_model->setBytes(QByteArray(20'000'000, 'a'));
    QSignalSpy others(m_compare.get(), &HexCompare::otherChanged);
    m_compare->start(write(u"other.bin"_s, QByteArray(20'000'000, 'b')));
    QVERIFY2(others.wait(), "the other file was not read");
    QCoreApplication::sendPostedEvents(m_compare.get());
    m_compare.reset();
    const void *const data = m_model->bytes().constData();
    QVERIFY(m_model->applyPatch(0, "x"));
    QCOMPARE(static_cast<const void *>(m_model->bytes().constData()), data);
}

KVTEDITOR_TEST_MAIN(TestHexCompare)
#include "tst_HexCompare.moc"
