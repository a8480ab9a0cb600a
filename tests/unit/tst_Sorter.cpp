#include "app/AppState.h"
#include "core/FileTools.h"
#include "support/FileSizeLimit.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString untouched = u"untouched"_s;
const QString usualOrder = u"Year,Make,OS"_s;

/// Every file below the folder, relative to it and sorted.
QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        files.append(it.next().mid(folder.size() + 1));
    }
    files.sort();
    return files;
}

} // namespace

class TestSorter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void folderParts_data();
    void folderParts();
    void folderParts_keepsOrderAndNumberOfKeys();
    void folderParts_longValue();

    void sortsInto_data();
    void sortsInto();
    void orderText_data();
    void orderText();
    void copiesEveryByte();
    void skipsWhatHasNoBytes();
    void followsLinkToFile();
    void sameNameTwice();
    void sameSetTwice();
    void longerCopyIsReplacedWhole();
    void destinationIsMade();
    void destinationCannotBeMade_data();
    void destinationCannotBeMade();
    void destinationInsideSourceFolder();
    void fileSortedOntoItself();
    void fileInThePlaceOfAFolder();
    void folderInThePlaceOfAFile();
    void fullDiskMidway();
    void emptyDestinationIsTheWorkingFolder();
    void relativePaths();
    void noFiles();
    void manyFiles();

    void sortCopy_reports_data();
    void sortCopy_reports();
    void sortCopy_reportsMissingDestination();
    void sortCopy_intoWorkingFolder();
    void sortCopy_leavesTheRestAlone();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    QString source(const QString &name, const QByteArray &content = "tune") const
    {
        return makeFile(inDir(u"in/"_s + name), content);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_workingFolder = QDir::currentPath();
};

void TestSorter::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestSorter::cleanup()
{
    QDir::setCurrent(m_workingFolder);
    m_dir.reset();
}

void TestSorter::folderParts_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QVariantMap>("meta");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("part");

    const QString plain = u"a.kvt"_s;
    const QString dated = u"e38_2014_12654321.kvt"_s;
    const auto map = [](const QString &key, const QVariant &value) { return QVariantMap{{key, value}}; };

    QTest::newRow("os-from-map") << dated << map(u"mainOS"_s, u"OS1"_s) << u"os"_s << u"OS1"_s;
    QTest::newRow("os-from-name") << dated << QVariantMap() << u"os"_s << u"12654321"_s;
    QTest::newRow("os-empty-in-map") << dated << map(u"mainOS"_s, QString()) << u"os"_s << u"12654321"_s;
    QTest::newRow("os-number-in-map") << plain << map(u"mainOS"_s, 12654321) << u"os"_s << u"12654321"_s;
    QTest::newRow("os-unknown") << plain << QVariantMap() << u"os"_s << u"UnknownOS"_s;
    QTest::newRow("os-blank-in-map") << dated << map(u"mainOS"_s, u"  "_s) << u"os"_s << u"file"_s;
    QTest::newRow("os-from-name-not-path")
        << u"a.kvt"_s << map(u"path"_s, u"/SILVERADO/a.kvt"_s) << u"os"_s << u"UnknownOS"_s;
    QTest::newRow("os-key-of-map-is-exact")
        << plain << map(u"mainos"_s, u"OS1"_s) << u"os"_s << u"UnknownOS"_s;
    QTest::newRow("os-slash") << plain << map(u"mainOS"_s, u"../12/34"_s) << u"os"_s << u".._12_34"_s;
    QTest::newRow("os-list-has-no-text")
        << plain << map(u"mainOS"_s, QVariantList{1, 2}) << u"os"_s << u"UnknownOS"_s;

    QTest::newRow("year-from-date") << dated << map(u"created"_s, u"2009-05-06 10:11"_s) << u"year"_s
                                    << u"2009"_s;
    QTest::newRow("year-four-characters") << dated << map(u"created"_s, u"2010"_s) << u"year"_s << u"2010"_s;
    QTest::newRow("year-no-digits") << dated << map(u"created"_s, u"June 2010"_s) << u"year"_s << u"June"_s;
    QTest::newRow("year-four-letters") << dated << map(u"created"_s, u"abcd"_s) << u"year"_s << u"abcd"_s;
    QTest::newRow("year-short") << dated << map(u"created"_s, u"201"_s) << u"year"_s << u"2014"_s;
    QTest::newRow("year-short-and-no-year")
        << plain << map(u"created"_s, u"201"_s) << u"year"_s << u"UnknownYear"_s;
    QTest::newRow("year-empty") << dated << map(u"created"_s, QString()) << u"year"_s << u"2014"_s;
    QTest::newRow("year-blank") << dated << map(u"created"_s, u"     "_s) << u"year"_s << u"file"_s;
    QTest::newRow("year-slashes") << dated << map(u"created"_s, u"1/2/2010"_s) << u"year"_s << u"1_2_"_s;
    QTest::newRow("year-number") << plain << map(u"created"_s, 2011) << u"year"_s << u"2011"_s;
    QTest::newRow("year-longer-number") << plain << map(u"created"_s, 20110506) << u"year"_s << u"2011"_s;
    QTest::newRow("year-first-of-name") << u"2019_2020.kvt"_s << QVariantMap() << u"year"_s << u"2019"_s;
    QTest::newRow("year-inside-number") << u"A123201999.kvt"_s << QVariantMap() << u"year"_s << u"2019"_s;
    QTest::newRow("year-of-name-1900") << u"x1920y.kvt"_s << QVariantMap() << u"year"_s << u"1920"_s;
    QTest::newRow("year-2105-is-not-a-year")
        << u"tune_2105.kvt"_s << QVariantMap() << u"year"_s << u"UnknownYear"_s;
    QTest::newRow("year-unknown") << plain << QVariantMap() << u"year"_s << u"UnknownYear"_s;

    QTest::newRow("make-from-map") << plain << map(u"system"_s, u"Chevy"_s) << u"make"_s << u"Chevy"_s;
    QTest::newRow("make-not-from-name") << u"Chevy.kvt"_s << QVariantMap() << u"make"_s << u"UnknownMake"_s;
    QTest::newRow("make-key-make-is-not-read")
        << plain << map(u"make"_s, u"Chevy"_s) << u"make"_s << u"UnknownMake"_s;
    QTest::newRow("make-slash") << plain << map(u"system"_s, u"GM/Chevy"_s) << u"make"_s << u"GM_Chevy"_s;
    QTest::newRow("make-dots") << plain << map(u"system"_s, u".."_s) << u"make"_s << u".."_s;
    QTest::newRow("make-outer-blanks-stay")
        << plain << map(u"system"_s, u" Ford "_s) << u"make"_s << u" Ford "_s;
    QTest::newRow("make-blank") << plain << map(u"system"_s, u" \t"_s) << u"make"_s << u"file"_s;
    QTest::newRow("make-every-bad-character")
        << plain << map(u"system"_s, uR"(a\b/c:d*e?f"g<h>i|j)"_s) << u"make"_s << u"a_b_c_d_e_f_g_h_i_j"_s;
    QTest::newRow("make-letters") << plain << map(u"system"_s, u"Citroën"_s) << u"make"_s << u"Citroën"_s;

    QTest::newRow("key-upper-case") << plain << map(u"system"_s, u"Ford"_s) << u"MAKE"_s << u"Ford"_s;
    QTest::newRow("key-outer-blanks") << plain << map(u"system"_s, u"Ford"_s) << u" \tMake "_s << u"Ford"_s;
    QTest::newRow("key-other") << plain << QVariantMap() << u"Colour"_s << u"Unknown"_s;
    QTest::newRow("key-other-in-map") << plain << map(u"colour"_s, u"red"_s) << u" Colour "_s << u"red"_s;
    QTest::newRow("key-other-case-of-map-counts")
        << plain << map(u"Colour"_s, u"red"_s) << u"Colour"_s << u"Unknown"_s;
    QTest::newRow("key-other-empty") << plain << map(u"colour"_s, QString()) << u"colour"_s << u"Unknown"_s;
    QTest::newRow("key-other-number") << plain << map(u"colour"_s, 7) << u"colour"_s << u"7"_s;
    QTest::newRow("key-other-slash") << plain << map(u"colour"_s, u"a/../b"_s) << u"colour"_s << u"a_.._b"_s;
    // Keys are lower-cased, so this entry of the map is out of their reach.
    QTest::newRow("key-mainOS") << dated << map(u"mainOS"_s, u"OS1"_s) << u"mainOS"_s << u"Unknown"_s;
    QTest::newRow("key-system") << plain << map(u"system"_s, u"Ford"_s) << u"System"_s << u"Ford"_s;
    QTest::newRow("key-created-is-whole")
        << plain << map(u"created"_s, u"2009-05-06"_s) << u"created"_s << u"2009-05-06"_s;
    QTest::newRow("key-empty") << plain << QVariantMap() << QString() << u"Unknown"_s;
    QTest::newRow("key-dots") << plain << QVariantMap() << u"../.."_s << u"Unknown"_s;
}

void TestSorter::folderParts()
{
    QFETCH(QString, fileName);
    QFETCH(QVariantMap, meta);
    QFETCH(QString, key);
    QFETCH(QString, part);
    QCOMPARE(FileTools::folderParts(fileName, meta, {key}), QStringList{part});
}

void TestSorter::folderParts_keepsOrderAndNumberOfKeys()
{
    const QString name = u"e38_2014_12654321.kvt"_s;
    QCOMPARE(FileTools::folderParts(name, {}, {}), QStringList());
    QCOMPARE(FileTools::folderParts(name, {}, {u"os"_s, u"Year"_s, u"x"_s, u"MAKE"_s, u"os"_s}),
             QStringList({u"12654321"_s, u"2014"_s, u"Unknown"_s, u"UnknownMake"_s, u"12654321"_s}));
}

void TestSorter::folderParts_longValue()
{
    const QString longText(300, u'x');
    QCOMPARE(FileTools::folderParts(u"a.kvt"_s, {{u"system"_s, longText}}, {u"make"_s}),
             QStringList{longText});
    QCOMPARE(FileTools::folderParts(longText + u".kvt"_s, {}, {u"os"_s}), QStringList{QString(300, u'X')});
}

void TestSorter::sortsInto_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("copy");

    QTest::newRow("usual") << u"2015_e38_12654321.kvt"_s << usualOrder
                           << u"2015/UnknownMake/12654321/2015_e38_12654321.kvt"_s;
    QTest::newRow("no-os") << u"tune_2014_abc.kvt"_s << usualOrder
                           << u"2014/UnknownMake/UnknownOS/tune_2014_abc.kvt"_s;
    QTest::newRow("nothing-known") << u"a.kvt"_s << usualOrder
                                   << u"UnknownYear/UnknownMake/UnknownOS/a.kvt"_s;
    QTest::newRow("os-only") << u"e38_12654321.kvt"_s << u"os"_s << u"12654321/e38_12654321.kvt"_s;
    QTest::newRow("unknown-key") << u"tune_2014_abc.kvt"_s << u"Year,Colour"_s
                                 << u"2014/Unknown/tune_2014_abc.kvt"_s;
    QTest::newRow("key-twice") << u"e38_12654321.kvt"_s << u"os,OS"_s
                               << u"12654321/12654321/e38_12654321.kvt"_s;
    QTest::newRow("first-word-is-the-os")
        << u"2015_SILVERADO_12345678.kvt"_s << u"os"_s << u"SILVERADO/2015_SILVERADO_12345678.kvt"_s;
    QTest::newRow("blanks") << u" my 2012 tune .kvt"_s << u"year"_s << u"2012/ my 2012 tune .kvt"_s;
    QTest::newRow("dots") << u"..2012..tune..kvt"_s << u"year"_s << u"2012/..2012..tune..kvt"_s;
    QTest::newRow("hidden") << u".e38_12654321"_s << u"os"_s << u"12654321/.e38_12654321"_s;
    QTest::newRow("letters") << u"größe_2012_é.kvt"_s << u"year"_s << u"2012/größe_2012_é.kvt"_s;
    QTest::newRow("place-markers") << u"%1%2 2012.kvt"_s << u"year"_s << u"2012/%1%2 2012.kvt"_s;
    QTest::newRow("hash-and-query") << u"a#b?c%20.kvt"_s << u"year"_s << u"UnknownYear/a#b?c%20.kvt"_s;
    QTest::newRow("markup") << u"<b>R&D 2012.kvt"_s << u"year"_s << u"2012/<b>R&D 2012.kvt"_s;
    QTest::newRow("newline") << u"a\n2012.kvt"_s << u"year"_s << u"2012/a\n2012.kvt"_s;
    QTest::newRow("backslash") << u"a\\b.kvt"_s << u"year"_s << u"UnknownYear/a\\b.kvt"_s;
    QTest::newRow("longest") << QString(251, u'X') + u".kvt"_s << u"os"_s
                             << QString(251, u'X') + u'/' + QString(251, u'X') + u".kvt"_s;
    QTest::newRow("colon-in-front") << u":2012.kvt"_s << u"year"_s << u"2012/:2012.kvt"_s;
    QTest::newRow("any-file") << u"notes.txt"_s << u"make"_s << u"UnknownMake/notes.txt"_s;
    QTest::newRow("no-suffix") << u"2012"_s << u"year"_s << u"2012/2012"_s;
}

void TestSorter::sortsInto()
{
    QFETCH(QString, name);
    QFETCH(QString, order);
    QFETCH(QString, copy);
    QString error = untouched;
    QCOMPARE(FileTools::sortCopyKvt({source(name)}, inDir(u"out"_s), order, &error), 1);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList{copy});
    QCOMPARE(contentOf(inDir(u"out/"_s + copy)), QByteArray("tune"));
    QCOMPARE(contentOf(inDir(u"in/"_s + name)), QByteArray("tune"));
    QCOMPARE(error, untouched);
}

void TestSorter::orderText_data()
{
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("folders");

    const QString usual = u"2014/UnknownMake/12654321/"_s;
    QTest::newRow("empty") << QString() << usual;
    QTest::newRow("blank") << u"   "_s << usual;
    QTest::newRow("commas") << u",,,"_s << usual;
    QTest::newRow("commas-and-blanks") << u" , ,"_s << usual;
    QTest::newRow("lower-case") << u"year,make,os"_s << usual;
    QTest::newRow("upper-case") << u"YEAR,MAKE,OS"_s << usual;
    QTest::newRow("blanks-around-keys") << u" Year ,\tMake , OS "_s << usual;
    QTest::newRow("empty-pieces-between") << u",Year,,Make, ,OS,"_s << usual;
    QTest::newRow("other-order") << u"OS,Year"_s << u"12654321/2014/"_s;
    QTest::newRow("trailing-blank") << u"Make "_s << u"UnknownMake/"_s;
    QTest::newRow("semicolons-do-not-separate") << u"Year;Make"_s << u"Unknown/"_s;
    QTest::newRow("key-of-300-characters") << QString(300, u'k') << u"Unknown/"_s;
    QTest::newRow("path-as-key") << u"../../x,/etc"_s << u"Unknown/Unknown/"_s;
}

void TestSorter::orderText()
{
    QFETCH(QString, order);
    QFETCH(QString, folders);
    const QString name = u"2014_12654321.kvt"_s;
    QCOMPARE(FileTools::sortCopyKvt({source(name)}, inDir(u"out"_s), order), 1);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList{folders + name});
}

void TestSorter::copiesEveryByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value) {
        bytes.append(static_cast<char>(value));
    }
    bytes = bytes.repeated(2048);
    QCOMPARE(FileTools::sortCopyKvt({source(u"a.kvt"_s, bytes)}, inDir(u"out"_s), u"make"_s), 1);
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/a.kvt"_s)), bytes);
}

void TestSorter::skipsWhatHasNoBytes()
{
    QVERIFY(QDir().mkpath(inDir(u"in/folder.kvt"_s)));
    QCOMPARE(::mkfifo(QFile::encodeName(inDir(u"in/pipe.kvt"_s)).constData(), 0600), 0);
    const QStringList files{source(u"a.kvt"_s),        source(u"empty.kvt"_s, {}), inDir(u"in/missing.kvt"_s),
                            inDir(u"in/folder.kvt"_s), inDir(u"in/pipe.kvt"_s),    QString(),
                            source(u"b.kvt"_s)};
    QString error = untouched;
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), u"make"_s, &error), 2);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList({u"UnknownMake/a.kvt"_s, u"UnknownMake/b.kvt"_s}));
    QCOMPARE(error, untouched);
}

void TestSorter::followsLinkToFile()
{
    QVERIFY(QFile::link(source(u"real.kvt"_s, "linked"), inDir(u"in/link.kvt"_s)));
    QCOMPARE(FileTools::sortCopyKvt({inDir(u"in/link.kvt"_s)}, inDir(u"out"_s), u"make"_s), 1);
    const QFileInfo copy(inDir(u"out/UnknownMake/link.kvt"_s));
    QVERIFY(!copy.isSymLink());
    QCOMPARE(contentOf(copy.filePath()), QByteArray("linked"));
}

void TestSorter::sameNameTwice()
{
    const QStringList files{source(u"one/a.kvt"_s, "the first, longer"), source(u"two/a.kvt"_s, "second")};
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), u"make"_s), 2);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList{u"UnknownMake/a.kvt"_s});
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/a.kvt"_s)), QByteArray("second"));
}

void TestSorter::sameSetTwice()
{
    const QStringList files{source(u"a_2012.kvt"_s), source(u"b_2013.kvt"_s)};
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), usualOrder), 2);
    const QStringList before = filesBelow(inDir(u"out"_s));
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), usualOrder), 2);
    QCOMPARE(filesBelow(inDir(u"out"_s)), before);
    QCOMPARE(before.size(), 2);
}

void TestSorter::longerCopyIsReplacedWhole()
{
    makeFile(inDir(u"out/UnknownMake/a.kvt"_s), "a much longer earlier copy");
    QCOMPARE(FileTools::sortCopyKvt({source(u"a.kvt"_s, "new")}, inDir(u"out"_s), u"make"_s), 1);
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/a.kvt"_s)), QByteArray("new"));
}

void TestSorter::destinationIsMade()
{
    QCOMPARE(FileTools::sortCopyKvt({source(u"a.kvt"_s)}, inDir(u"x/y/z"_s), u"make"_s), 1);
    QVERIFY(QFileInfo::exists(inDir(u"x/y/z/UnknownMake/a.kvt"_s)));
    QCOMPARE(FileTools::sortCopyKvt({}, inDir(u"none"_s), u"make"_s), 0);
    QVERIFY(QFileInfo(inDir(u"none"_s)).isDir());
}

void TestSorter::destinationCannotBeMade_data()
{
    QTest::addColumn<QString>("destination");

    QTest::newRow("is-a-file") << u"file"_s;
    QTest::newRow("below-a-file") << u"file/below/it"_s;
    QTest::newRow("name-too-long") << QString(300, u'x');
    QTest::newRow("broken-link") << u"broken"_s;
}

void TestSorter::destinationCannotBeMade()
{
    QFETCH(QString, destination);
    makeFile(inDir(u"file"_s), "in the way");
    QVERIFY(QFile::link(inDir(u"no/such/target"_s), inDir(u"broken"_s)));
    const QStringList files{source(u"a.kvt"_s)};
    const QStringList before = filesBelow(m_dir->path());
    QString error = untouched;
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(destination), usualOrder, &error), 0);
    QCOMPARE(error, u"Destination folder is missing."_s);
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(destination), usualOrder), 0);
    QCOMPARE(filesBelow(m_dir->path()), before);
    QCOMPARE(contentOf(inDir(u"file"_s)), QByteArray("in the way"));
}

void TestSorter::destinationInsideSourceFolder()
{
    const QStringList files{source(u"a_2012.kvt"_s), source(u"b_2013.kvt"_s)};
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"in/sorted"_s), u"year"_s), 2);
    QCOMPARE(filesBelow(inDir(u"in"_s)),
             QStringList({u"a_2012.kvt"_s, u"b_2013.kvt"_s, u"sorted/2012/a_2012.kvt"_s,
                          u"sorted/2013/b_2013.kvt"_s}));
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"in"_s), u"year"_s), 2);
    QCOMPARE(contentOf(inDir(u"in/2012/a_2012.kvt"_s)), QByteArray("tune"));
}

void TestSorter::fileSortedOntoItself()
{
    const QString path = source(u"2012/a_2012.kvt"_s, "itself");
    const QDateTime longAgo(QDate(2012, 3, 4), QTime(5, 6));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    file.close();
    QCOMPARE(FileTools::sortCopyKvt({path}, inDir(u"in"_s), u"year"_s), 1);
    QCOMPARE(contentOf(path), QByteArray("itself"));
    // It is not even written: a full disk would lose it.
    QCOMPARE(QFileInfo(path).lastModified(), longAgo);
    QCOMPARE(filesBelow(inDir(u"in"_s)), QStringList{u"2012/a_2012.kvt"_s});
}

void TestSorter::fileInThePlaceOfAFolder()
{
    makeFile(inDir(u"out/2012"_s), "in the way");
    const QStringList files{source(u"a_2012.kvt"_s), source(u"b_2013.kvt"_s), source(u"c_2012.kvt"_s)};
    QString error = untouched;
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), usualOrder, &error), 1);
    QCOMPARE(filesBelow(inDir(u"out"_s)),
             QStringList({u"2012"_s, u"2013/UnknownMake/UnknownOS/b_2013.kvt"_s}));
    QCOMPARE(contentOf(inDir(u"out/2012"_s)), QByteArray("in the way"));
    QCOMPARE(error, untouched);
}

void TestSorter::folderInThePlaceOfAFile()
{
    QVERIFY(QDir().mkpath(inDir(u"out/UnknownMake/b.kvt"_s)));
    const QStringList files{source(u"a.kvt"_s), source(u"b.kvt"_s), source(u"c.kvt"_s)};
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), u"make"_s), 2);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList({u"UnknownMake/a.kvt"_s, u"UnknownMake/c.kvt"_s}));
    QVERIFY(QFileInfo(inDir(u"out/UnknownMake/b.kvt"_s)).isDir());
}

void TestSorter::fullDiskMidway()
{
    const QByteArray large(100'000, 'L');
    const QStringList files{source(u"a.kvt"_s), source(u"large.kvt"_s, large), source(u"z.kvt"_s)};
    QString error = untouched;
    int copied = 0;
    {
        const FileSizeLimit limit(50'000);
        copied = FileTools::sortCopyKvt(files, inDir(u"out"_s), u"make"_s, &error);
    }
    QCOMPARE(copied, 2);
    QCOMPARE(error, untouched);
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/a.kvt"_s)), QByteArray("tune"));
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/z.kvt"_s)), QByteArray("tune"));
    QCOMPARE(contentOf(files.at(1)), large);
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), u"make"_s), 3);
    QCOMPARE(contentOf(inDir(u"out/UnknownMake/large.kvt"_s)), large);
}

void TestSorter::emptyDestinationIsTheWorkingFolder()
{
    const QStringList files{source(u"a_2012.kvt"_s)};
    QVERIFY(QDir().mkdir(inDir(u"here"_s)));
    QVERIFY(QDir::setCurrent(inDir(u"here"_s)));
    QString error = untouched;
    for (const QString &destination : {QString(), u""_s}) {
        QCOMPARE(FileTools::sortCopyKvt(files, destination, u"year,make"_s, &error), 1);
        QCOMPARE(filesBelow(inDir(u"here"_s)), QStringList{u"2012/UnknownMake/a_2012.kvt"_s});
        QVERIFY(QFile::remove(inDir(u"here/2012/UnknownMake/a_2012.kvt"_s)));
    }
    QCOMPARE(error, untouched);
}

void TestSorter::relativePaths()
{
    QVERIFY(!source(u"a_2012.kvt"_s).isEmpty());
    QVERIFY(QDir::setCurrent(m_dir->path()));
    QCOMPARE(FileTools::sortCopyKvt({u"in/a_2012.kvt"_s}, u"out"_s, u"year"_s), 1);
    QVERIFY(QFileInfo::exists(inDir(u"out/2012/a_2012.kvt"_s)));
    QCOMPARE(FileTools::sortCopyKvt({u"./in/../in/a_2012.kvt"_s}, u"./out/"_s, u"os"_s), 1);
    QVERIFY(QFileInfo::exists(inDir(u"out/UnknownOS/a_2012.kvt"_s)));
}

void TestSorter::noFiles()
{
    QString error = untouched;
    QCOMPARE(FileTools::sortCopyKvt({}, inDir(u"out"_s), usualOrder, &error), 0);
    QCOMPARE(filesBelow(inDir(u"out"_s)), QStringList());
    QCOMPARE(error, untouched);
}

void TestSorter::manyFiles()
{
    const int count = isExhaustive() ? 10'000 : 2'000;
    QStringList files;
    for (int index = 0; index < count; ++index) {
        const QString name = u"t_%1_%2.kvt"_s.arg(1950 + index % 100).arg(index);
        files.append(source(name, QByteArray::number(index)));
    }
    QCOMPARE(FileTools::sortCopyKvt(files, inDir(u"out"_s), u"Year"_s), count);
    QCOMPARE(QDir(inDir(u"out"_s)).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 100);
    QCOMPARE(filesBelow(inDir(u"out"_s)).size(), count);
    QCOMPARE(contentOf(inDir(u"out/1950/t_1950_0.kvt"_s)), QByteArray("0"));
    const QByteArray last = QByteArray::number(count - 1);
    QCOMPARE(contentOf(inDir(u"out/2049/t_2049_%1.kvt"_s.arg(count - 1))), last);
}

void TestSorter::sortCopy_reports_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");

    const QString a = u"a.kvt"_s;
    const QString b = u"b.kvt"_s;
    const QString empty = u"empty.kvt"_s;
    QTest::newRow("all") << QStringList{a, b} << u"Copied 2 of 2 file(s)."_s << 1;
    QTest::newRow("one-empty") << QStringList{a, empty, b} << u"Copied 2 of 3 file(s)."_s << 1;
    QTest::newRow("one-copied") << QStringList{empty, a, empty} << u"Copied 1 of 3 file(s)."_s << 1;
    QTest::newRow("none-copied") << QStringList{empty, empty, u"missing"_s} << u"Copied 0 of 3 file(s)."_s
                                 << 0;
    QTest::newRow("same-file-twice") << QStringList{a, a} << u"Copied 2 of 2 file(s)."_s << 1;
    QTest::newRow("none-given") << QStringList() << u"Copied 0 of 0 file(s)."_s << 0;
}

void TestSorter::sortCopy_reports()
{
    QFETCH(QStringList, names);
    source(u"a.kvt"_s);
    source(u"b.kvt"_s);
    source(u"empty.kvt"_s, {});
    QStringList files;
    for (const QString &name : std::as_const(names)) {
        files.append(inDir(u"in/"_s + name));
    }
    AppState state;
    QSignalSpy statuses(&state, &AppState::statusChanged);
    state.sortCopy(files, inDir(u"out"_s), usualOrder);
    QTEST(state.status(), "status");
    QTEST(state.statusOK(), "level");
    QCOMPARE(statuses.count(), 1);
    state.sortCopy(files, inDir(u"out"_s), usualOrder);
    QTEST(state.status(), "status");
    QTEST(state.statusOK(), "level");
    QCOMPARE(statuses.count(), 2);
}

void TestSorter::sortCopy_reportsMissingDestination()
{
    makeFile(inDir(u"file"_s), "in the way");
    AppState state;
    state.sortCopy({source(u"a.kvt"_s)}, inDir(u"file"_s), usualOrder);
    QCOMPARE(state.status(), u"Destination folder is missing."_s);
    QCOMPARE(state.statusOK(), 0);
    state.sortCopy({source(u"a.kvt"_s)}, inDir(u"out"_s), usualOrder);
    QCOMPARE(state.status(), u"Copied 1 of 1 file(s)."_s);
    QCOMPARE(state.statusOK(), 1);
}

void TestSorter::sortCopy_intoWorkingFolder()
{
    const QStringList files{source(u"a_2012.kvt"_s)};
    QVERIFY(QDir().mkdir(inDir(u"here"_s)));
    QVERIFY(QDir::setCurrent(inDir(u"here"_s)));
    AppState state;
    state.sortCopy(files, {}, {});
    QCOMPARE(state.status(), u"Copied 1 of 1 file(s)."_s);
    QCOMPARE(filesBelow(inDir(u"here"_s)), QStringList{u"2012/UnknownMake/UnknownOS/a_2012.kvt"_s});
}

void TestSorter::sortCopy_leavesTheRestAlone()
{
    AppState state;
    QSignalSpy busy(&state, &AppState::busyChanged);
    QSignalSpy files(&state, &AppState::fileChanged);
    QSignalSpy tabs(&state, &AppState::tabChanged);
    QSignalSpy search(&state, &AppState::searchChanged);
    state.sortCopy({source(u"a.kvt"_s)}, inDir(u"out"_s), usualOrder);
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(busy.count() + files.count() + tabs.count() + search.count(), 0);
}

KVTEDITOR_TEST_MAIN(TestSorter)
#include "tst_Sorter.moc"
