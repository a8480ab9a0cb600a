#include "SampleData.h"
#include "support/TestMain.h"

#include <QDirIterator>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QMap<QString, QByteArray> filesIn(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator walk(folder, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        files.insert(QDir(folder).relativeFilePath(path), contentOf(path));
    }
    return files;
}

} // namespace

class TestSampleData : public QObject
{
    Q_OBJECT

private slots:
    void vinHasRightCheckDigit();
    void tunesHaveTheModulesTheirNamesSay_data();
    void tunesHaveTheModulesTheirNamesSay();
    void donorHasTheSameSegmentsWithOtherBytes();
    void libraryIsATreeOfTwoHundredReadableFiles();
    void sameFilesEveryTime();
    void unwritableFolderIsReported();

private:
    QTemporaryDir m_folder;
};

void TestSampleData::vinHasRightCheckDigit()
{
    QCOMPARE(SampleData::vin(1), u"1GCRKSE08FZ000001"_s);
    QCOMPARE(SampleData::vin(2), u"1GCRKSE0XFZ000002"_s);
    const QRegularExpression form(u"^[A-HJ-NPR-Z0-9]{8}[0-9X][A-HJ-NPR-Z0-9]{8}$"_s);
    for (int i = 0; i < 300; ++i)
        QVERIFY2(form.match(SampleData::vin(i)).hasMatch(), qPrintable(SampleData::vin(i)));
}

void TestSampleData::tunesHaveTheModulesTheirNamesSay_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("modules");
    QTest::newRow("one") << u"one-module.kvt"_s << 1;
    QTest::newRow("two") << u"two-modules.kvt"_s << 2;
    QTest::newRow("five") << u"five-modules.kvt"_s << 5;
    QTest::newRow("donor") << u"donor.kvt"_s << 1;
    QTest::newRow("ctz") << u"one-module.ctz"_s << 1;
}

void TestSampleData::tunesHaveTheModulesTheirNamesSay()
{
    QFETCH(QString, name);
    QFETCH(int, modules);
    QVERIFY(SampleData::generate(m_folder.path()));
    const std::optional<SampleTune> tune = SampleContainer::read(contentOf(m_folder.filePath(name)));
    QVERIFY(tune);
    QCOMPARE(tune->modules.size(), modules);
    static const QRegularExpression os(u"^([0-9]{7,9}|[0-9]{8}[A-Z]{2})$"_s);
    for (const SampleModule &module : tune->modules) {
        QCOMPARE(module.vin.size(), 17);
        QVERIFY2(os.match(module.mainOs).hasMatch(), qPrintable(module.mainOs));
        QCOMPARE(module.rows.size(), 6);
        QCOMPARE(module.segments.size(), 5);
    }
}

void TestSampleData::donorHasTheSameSegmentsWithOtherBytes()
{
    const QList<SampleSegment> base = SampleData::tune(1, 1).modules.first().segments;
    const QList<SampleSegment> donor = SampleData::tune(1, 4).modules.first().segments;
    QCOMPARE(donor.size(), base.size());
    for (qsizetype i = 0; i < base.size(); ++i) {
        QCOMPARE(donor[i].name, base[i].name);
        QCOMPARE(donor[i].bytes.size(), base[i].bytes.size());
        QVERIFY(donor[i].bytes != base[i].bytes);
    }
}

void TestSampleData::libraryIsATreeOfTwoHundredReadableFiles()
{
    QVERIFY(SampleData::generate(m_folder.path()));
    const QMap<QString, QByteArray> files = filesIn(m_folder.filePath(u"library"_s));
    QCOMPARE(files.size(), 200);
    const QRegularExpression form(
        u"^[A-Z]+/20[0-9]{2}/20[0-9]{2}_[A-Z0-9]+_([0-9]{7,8}|[0-9]{8}AB)\\.(kvt|ctz)$"_s);
    int ctz = 0;
    int suffixed = 0;
    for (auto file = files.begin(); file != files.end(); ++file) {
        QVERIFY2(form.match(file.key()).hasMatch(), qPrintable(file.key()));
        const std::optional<SampleTune> tune = SampleContainer::read(file.value());
        QVERIFY(tune);
        QVERIFY(file.key().contains(tune->modules.first().mainOs));
        ctz += file.key().endsWith(".ctz"_L1);
        suffixed += file.key().contains("AB."_L1);
    }
    QCOMPARE(ctz, 29);
    QCOMPARE(suffixed, 67);
}

void TestSampleData::sameFilesEveryTime()
{
    const QTemporaryDir other;
    QVERIFY(SampleData::generate(m_folder.path()));
    QVERIFY(SampleData::generate(other.path()));
    const QMap<QString, QByteArray> files = filesIn(m_folder.path());
    QCOMPARE(files.size(), 206);
    QCOMPARE(files.value(u"flash.bin"_s).size(), 65536);
    QCOMPARE(filesIn(other.path()), files);
}

void TestSampleData::unwritableFolderIsReported()
{
    const QString path = m_folder.filePath(u"in-the-way"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QString error;
    QVERIFY(!SampleData::generate(path, &error));
    QVERIFY2(error.contains(path), qPrintable(error));
    QVERIFY(!SampleData::generate(path));
    QVERIFY(QFile::remove(path));
}

KVTEDITOR_TEST_MAIN(TestSampleData)
#include "tst_SampleData.moc"
