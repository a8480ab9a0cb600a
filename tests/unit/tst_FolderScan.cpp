#include "core/FileTools.h"
#include "support/PlainRights.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <atomic>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// What happens once so many files were asked for their size.
std::function<void()> afterSizes;
int sizesLeft = 0;

} // namespace

// In place of the C library's, to know where a scan is. Qt asks by the other, and not for files alone.
#ifdef KVTEDITOR_PORTABLE_FILES
extern "C" int statx(int folder, const char *path, int flags, unsigned mask, struct statx *status) noexcept
{
    if (sizesLeft > 0 && --sizesLeft == 0)
        afterSizes();
    return static_cast<int>(syscall(SYS_statx, folder, path, flags, mask, status));
}
#else
extern "C" int fstatat(int folder, const char *path, struct stat *status, int flags) noexcept
{
    if (sizesLeft > 0 && --sizesLeft == 0)
        afterSizes();
    return static_cast<int>(syscall(SYS_newfstatat, folder, path, status, flags));
}
#endif

namespace {

struct Filters
{
    QString name;
    QString os;
    QString make;
    QString year;
};

/// A file with these bytes as its name, valid UTF-8 or not.
bool makeRawFile(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    return file >= 0 && ::close(file) == 0;
}

QVariantList scan(const QString &root, const Filters &filters = {}, bool recursive = true, int limit = 0,
                  const std::atomic<bool> *cancel = nullptr)
{
    return FileTools::scanCalFolder(root, recursive, filters.name, filters.os, filters.make, filters.year,
                                    limit, cancel);
}

QStringList valuesOf(const QVariantList &hits, const QString &key)
{
    QStringList values;
    for (const QVariant &hit : hits) {
        values.append(hit.toMap().value(key).toString());
    }
    return values;
}

QStringList sortedNames(const QVariantList &hits)
{
    QStringList names = valuesOf(hits, u"name"_s);
    names.sort();
    return names;
}

/// What Qt's own iterator finds, filtered one file at a time.
QVariantList foundByIterator(const QString &root, const Filters &filters = {}, bool recursive = true)
{
    static const QRegularExpression token(u"([A-Z0-9]{6,})"_s);
    static const QRegularExpression year(u"(19|20)\\d{2}"_s);
    const auto passes = [](const QString &text, const QString &filter) {
        return filter.isEmpty() || text.toLower().contains(filter.toLower());
    };
    QVariantList hits;
    if (!QFileInfo(root).isDir())
        return hits;
    QDirIterator it(root, {u"*.kvt"_s, u"*.ctz"_s, u"*.KVT"_s, u"*.CTZ"_s}, QDir::Files | QDir::NoSymLinks,
                    recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo file = it.fileInfo();
        const QString os = token.match(file.fileName().toUpper()).captured(1);
        if (!passes(file.fileName(), filters.name) || !passes(path, filters.make)
            || (!filters.year.isEmpty() && !path.contains(filters.year))
            || (!passes(os, filters.os) && !passes(file.fileName(), filters.os))) {
            continue;
        }
        hits.append(QVariantMap{{u"name"_s, file.fileName()},
                                {u"os"_s, os},
                                {u"year"_s, year.match(file.fileName()).captured(0)},
                                {u"make"_s, QString()},
                                {u"size"_s, QString::number(file.size())},
                                {u"path"_s, file.absoluteFilePath()}});
    }
    return hits;
}

/// Fills a folder with files, folders and links of all kinds, the same for one seed.
class RandomTree
{
public:
    RandomTree(const QString &root, quint32 seed)
        : m_root(root)
        , m_random(seed)
    {
        fill(root, 0);
    }

private:
    QString pick(const QStringList &list) { return list.at(m_random.bounded(static_cast<int>(list.size()))); }
    QString stem()
    {
        return pick({u"tune"_s, u"e38_12654321"_s, u"2015_SILVERADO"_s, u"Größe"_s, u"abc12"_s, u".hidden"_s,
                     u"a b"_s, u"ﬁnder12"_s, u"STRAßE99"_s, u"x.1999"_s, u""_s, u"line\nbreak"_s})
            + QString::number(m_random.bounded(30));
    }
    QString ending()
    {
        return pick({u".kvt"_s, u".ctz"_s, u".KVT"_s, u".CTZ"_s, u".KvT"_s, u".bin"_s, u".kvt.bak"_s, u""_s});
    }
    void fill(const QString &folder, int depth)
    {
        QDir().mkpath(folder);
        for (int count = m_random.bounded(25); count > 0; --count) {
            makeFile(folder + u'/' + stem() + ending(), QByteArray(m_random.bounded(50), 'x'));
        }
        for (int count = m_random.bounded(3); count > 0; --count) {
            QFile::link(pick({m_root, folder, u"missing"_s, u"/etc/hostname"_s}),
                        folder + u'/' + stem() + ending());
        }
        for (int count = depth < 4 ? m_random.bounded(4) : 0; count > 0; --count) {
            fill(folder + u'/' + pick({u"Chevy"_s, u"2014"_s, u".cache"_s, u"sub.kvt"_s, u"Ford"_s}),
                 depth + 1);
        }
    }

    QString m_root;
    QRandomGenerator m_random;
};

} // namespace

class TestFolderScan : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void endings_data();
    void endings();
    void hitHoldsTextsOnly();
    void hitFields_data();
    void hitFields();
    void sizeOfSparseFile();
    void filters_data();
    void filters();
    void emptyFiltersLetEverythingPass();
    void makeAndYearLookAtThePathAsGiven();
    void upperCasedTokenIsLookedAtToo_data();
    void upperCasedTokenIsLookedAtToo();
    void onlyFiles();
    void linksAreLeftOut();
    void linkAsRoot();
    void hiddenIsLeftOut();
    void notRecursive();
    void rootSpellings_data();
    void rootSpellings();
    void noSuchRoot_data();
    void noSuchRoot();
    void limit_data();
    void limit();
    void limitCountsHits();
    void cancelBefore();
    void cancelAmongFilesOfOneFolder();
    void cancelDuring();
    void oddNames_data();
    void oddNames();
    void nameThatIsNotUtf8();
    void unreadableFolder();
    void folderThatVanishes();
    void filesThatVanish();
    void thousandLevels();
    void manyFiles();
    void sameAsIterator_data();
    void sameAsIterator();
    void severalThreadsAtOnce();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    QByteArray rawInDir(const QByteArray &name) const
    {
        return QFile::encodeName(m_dir->path()) + '/' + name;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_workingFolder = QDir::currentPath();
};

void TestFolderScan::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestFolderScan::cleanup()
{
    QDir::setCurrent(m_workingFolder);
    m_dir.reset();
}

void TestFolderScan::endings_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("listed");

    QTest::newRow("kvt") << u"a.kvt"_s << true;
    QTest::newRow("KVT") << u"a.KVT"_s << true;
    QTest::newRow("ctz") << u"a.ctz"_s << true;
    QTest::newRow("CTZ") << u"a.CTZ"_s << true;
    QTest::newRow("mixed") << u"a.KvT"_s << true;
    QTest::newRow("last-suffix-counts") << u"a.bin.kvt"_s << true;
    QTest::newRow("blank-before") << u"a .kvt"_s << true;
    QTest::newRow("bin") << u"d.bin"_s << false;
    QTest::newRow("backup") << u"a.kvt.bak"_s << false;
    QTest::newRow("blank-after") << u"a.kvt "_s << false;
    QTest::newRow("no-dot") << u"akvt"_s << false;
    QTest::newRow("longer") << u"a.kvtx"_s << false;
    QTest::newRow("kelvin-sign") << u"a.\u212avt"_s << false;
    QTest::newRow("suffix-without-name") << u".kvt"_s << false;
}

void TestFolderScan::endings()
{
    QFETCH(QString, name);
    QFETCH(bool, listed);
    makeFile(inDir(name));
    QCOMPARE(valuesOf(scan(m_dir->path()), u"name"_s), listed ? QStringList{name} : QStringList());
}

void TestFolderScan::hitHoldsTextsOnly()
{
    makeFile(inDir(u"2015_e38_12654321.kvt"_s), "12345");
    const QVariantList hits = scan(m_dir->path());
    QCOMPARE(hits.size(), 1);
    QCOMPARE(hits.first().toMap(),
             QVariantMap({{u"name"_s, u"2015_e38_12654321.kvt"_s},
                          {u"os"_s, u"12654321"_s},
                          {u"year"_s, u"2015"_s},
                          {u"make"_s, QString()},
                          {u"size"_s, u"5"_s},
                          {u"path"_s, inDir(u"2015_e38_12654321.kvt"_s)}}));
    const QVariantMap hit = hits.first().toMap();
    for (const QVariant &value : hit) {
        QCOMPARE(value.typeId(), int(QMetaType::QString));
    }
}

void TestFolderScan::hitFields_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("os");
    QTest::addColumn<QString>("year");

    QTest::newRow("nothing-known") << u"a.kvt"_s << 0 << QString() << QString();
    QTest::newRow("lower-case-token") << u"silverado.kvt"_s << 1 << u"SILVERADO"_s << QString();
    QTest::newRow("short-token") << u"abc12.ctz"_s << 10 << QString() << QString();
    QTest::newRow("first-token") << u"2015_SILVERADO_12345678.kvt"_s << 999 << u"SILVERADO"_s << u"2015"_s;
    QTest::newRow("year-inside-token") << u"A123201999.kvt"_s << 4096 << u"A123201999"_s << u"2019"_s;
    QTest::newRow("year-not-from-folder") << u"2012/Chevrolet/a.kvt"_s << 2 << QString() << QString();
    QTest::newRow("token-through-upper-casing") << u"straße12.kvt"_s << 3 << u"STRASSE12"_s << QString();
    QTest::newRow("token-stops-at-other-letters") << u"größen12.kvt"_s << 3 << u"SSEN12"_s << QString();
}

void TestFolderScan::hitFields()
{
    QFETCH(QString, name);
    QFETCH(int, bytes);
    makeFile(inDir(name), QByteArray(bytes, 'x'));
    const QVariantList hits = scan(m_dir->path());
    QCOMPARE(hits.size(), 1);
    const QVariantMap hit = hits.first().toMap();
    QCOMPARE(hit.value(u"name"_s).toString(), QFileInfo(name).fileName());
    QCOMPARE(hit.value(u"path"_s).toString(), inDir(name));
    QCOMPARE(hit.value(u"size"_s).toString(), QString::number(bytes));
    QCOMPARE(hit.value(u"make"_s).toString(), QString());
    QTEST(hit.value(u"os"_s).toString(), "os");
    QTEST(hit.value(u"year"_s).toString(), "year");
}

void TestFolderScan::sizeOfSparseFile()
{
    QFile file(inDir(u"large.kvt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(5'000'000'000));
    file.close();
    QCOMPARE(valuesOf(scan(m_dir->path()), u"size"_s), QStringList{u"5000000000"_s});
}

void TestFolderScan::filters_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("filters");
    QTest::addColumn<bool>("passes");

    const auto name = [](const QString &text) { return QStringList{text, {}, {}, {}}; };
    const auto os = [](const QString &text) { return QStringList{{}, text, {}, {}}; };
    const auto make = [](const QString &text) { return QStringList{{}, {}, text, {}}; };
    const auto year = [](const QString &text) { return QStringList{{}, {}, {}, text}; };

    QTest::newRow("name-part") << u"stock_truck.kvt"_s << name(u"ck_tr"_s) << true;
    QTest::newRow("name-other-case") << u"Stock.kvt"_s << name(u"sTOCK"_s) << true;
    QTest::newRow("name-with-suffix") << u"stock.KVT"_s << name(u"k.kvt"_s) << true;
    QTest::newRow("name-absent") << u"stock.kvt"_s << name(u"stick"_s) << false;
    QTest::newRow("name-not-the-folder") << u"Stock/a.kvt"_s << name(u"stock"_s) << false;
    QTest::newRow("name-blank-counts") << u"stock.kvt"_s << name(u"stock "_s) << false;
    QTest::newRow("name-blank-found") << u"my stock.kvt"_s << name(u" "_s) << true;
    QTest::newRow("name-is-not-a-pattern") << u"stock.kvt"_s << name(u"st*"_s) << false;
    QTest::newRow("name-star-is-a-letter") << u"st*ck.kvt"_s << name(u"t*c"_s) << true;
    QTest::newRow("name-letters") << u"Grösse_1.kvt"_s << name(u"GRÖSSE"_s) << true;
    QTest::newRow("name-letters-reverse") << u"GRÖSSE.kvt"_s << name(u"grösse"_s) << true;
    // Both are lower-cased, which leaves the sharp s as it is.
    QTest::newRow("name-sharp-s-is-not-ss") << u"größe.kvt"_s << name(u"GRÖSSE"_s) << false;
    QTest::newRow("name-sharp-s") << u"größe.kvt"_s << name(u"GRÖß"_s) << true;
    QTest::newRow("name-capital-sharp-s") << u"größe.kvt"_s << name(u"\u1e9e"_s) << true;
    QTest::newRow("name-composed-is-not-decomposed") << u"gro\u0308sse.kvt"_s << name(u"grö"_s) << false;
    QTest::newRow("name-final-sigma-is-kept") << u"οδος.kvt"_s << name(u"ΟΔΟΣ"_s) << false;
    QTest::newRow("name-sigma") << u"οδοσ.kvt"_s << name(u"ΟΔΟΣ"_s) << true;
    QTest::newRow("name-dotted-capital-i") << u"\u0130X.kvt"_s << name(u"i"_s) << true;
    QTest::newRow("name-kelvin-sign") << u"a\u212a.kvt"_s << name(u"ak"_s) << true;
    QTest::newRow("name-cyrillic") << u"Двигатель.kvt"_s << name(u"ДВИГ"_s) << true;
    QTest::newRow("name-astral") << u"\U00010400.kvt"_s << name(u"\U00010428"_s) << true;
    QTest::newRow("filter-longer-than-any-name") << u"a.kvt"_s << name(QString(5000, u'a')) << false;

    QTest::newRow("os-token") << u"e38_12654321.kvt"_s << os(u"1265"_s) << true;
    QTest::newRow("os-name-without-token") << u"x1265.kvt"_s << os(u"1265"_s) << true;
    QTest::newRow("os-token-other-case") << u"silverado.kvt"_s << os(u"Silver"_s) << true;
    QTest::newRow("os-name-after-the-token") << u"12654321_e38.kvt"_s << os(u"E38"_s) << true;
    QTest::newRow("os-absent") << u"e38_12654321.kvt"_s << os(u"9999"_s) << false;
    QTest::newRow("os-not-the-folder") << u"12654321/a.kvt"_s << os(u"1265"_s) << false;

    QTest::newRow("make-folder") << u"Chevy/a.kvt"_s << make(u"chevy"_s) << true;
    QTest::newRow("make-upper-folder") << u"x/CHEVY trucks/y/a.kvt"_s << make(u"Chevy"_s) << true;
    QTest::newRow("make-name") << u"my_chevy.kvt"_s << make(u"CHEVY"_s) << true;
    QTest::newRow("make-across-separator") << u"Chevy/2015.kvt"_s << make(u"vy/20"_s) << true;
    QTest::newRow("make-letters") << u"CITROËN/a.kvt"_s << make(u"citroën"_s) << true;
    QTest::newRow("make-absent") << u"Ford/a.kvt"_s << make(u"chevy"_s) << false;

    QTest::newRow("year-folder") << u"2014/a.kvt"_s << year(u"2014"_s) << true;
    QTest::newRow("year-name") << u"a_2014.kvt"_s << year(u"2014"_s) << true;
    QTest::newRow("year-part") << u"a_2014.kvt"_s << year(u"14.k"_s) << true;
    QTest::newRow("year-absent") << u"2013/a_2015.kvt"_s << year(u"2014"_s) << false;
    QTest::newRow("year-same-case") << u"Model/a.kvt"_s << year(u"Model"_s) << true;
    QTest::newRow("year-other-case") << u"Model/a.kvt"_s << year(u"model"_s) << false;
    QTest::newRow("year-not-lower-cased") << u"model/a.kvt"_s << year(u"Model"_s) << false;

    QTest::newRow("all-pass") << u"Chevy/2014/e38_12654321_stock.kvt"_s
                              << QStringList{u"STOCK"_s, u"1265"_s, u"chev"_s, u"2014"_s} << true;
    QTest::newRow("all-but-name") << u"Chevy/2014/e38_12654321.kvt"_s
                                  << QStringList{u"stock"_s, u"1265"_s, u"chev"_s, u"2014"_s} << false;
    QTest::newRow("all-but-os") << u"Chevy/2014/e38_stock.kvt"_s
                                << QStringList{u"stock"_s, u"1265"_s, u"chev"_s, u"2014"_s} << false;
    QTest::newRow("all-but-make") << u"Ford/2014/e38_12654321_stock.kvt"_s
                                  << QStringList{u"stock"_s, u"1265"_s, u"chev"_s, u"2014"_s} << false;
    QTest::newRow("all-but-year") << u"Chevy/2013/e38_12654321_stock.kvt"_s
                                  << QStringList{u"stock"_s, u"1265"_s, u"chev"_s, u"2014"_s} << false;
}

void TestFolderScan::filters()
{
    QFETCH(QString, path);
    QFETCH(QStringList, filters);
    QFETCH(bool, passes);
    makeFile(inDir(u"root/"_s + path));
    // A relative root, so that the folder's own random name plays no part.
    QVERIFY(QDir::setCurrent(m_dir->path()));
    const Filters given{filters.at(0), filters.at(1), filters.at(2), filters.at(3)};
    QCOMPARE(valuesOf(scan(u"root"_s, given), u"path"_s),
             passes ? QStringList{inDir(u"root/"_s + path)} : QStringList());
}

void TestFolderScan::emptyFiltersLetEverythingPass()
{
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"b.ctz"_s));
    QCOMPARE(scan(m_dir->path()).size(), 2);
    QCOMPARE(scan(m_dir->path(), {u""_s, u""_s, u""_s, u""_s}).size(), 2);
}

void TestFolderScan::makeAndYearLookAtThePathAsGiven()
{
    makeFile(inDir(u"Chevy2014/sub/a.kvt"_s));
    QVERIFY(QDir::setCurrent(inDir(u"Chevy2014"_s)));
    QCOMPARE(scan(u"."_s, {{}, {}, u"chevy"_s, {}}).size(), 0);
    QCOMPARE(scan(u"."_s, {{}, {}, {}, u"2014"_s}).size(), 0);
    QCOMPARE(scan(u"."_s, {{}, {}, u"./SUB/"_s, {}}).size(), 1);
    QCOMPARE(scan(u"../Chevy2014"_s, {{}, {}, u"chevy"_s, u"2014"_s}).size(), 1);
    QCOMPARE(scan(u"../Chevy2014"_s, {{}, {}, {}, u"../"_s}).size(), 1);
    QCOMPARE(scan(inDir(u"Chevy2014"_s), {{}, {}, u"chevy"_s, u"2014"_s}).size(), 1);
}

void TestFolderScan::upperCasedTokenIsLookedAtToo_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<bool>("passes");

    // Upper-casing makes ASCII letters of these, which the name itself does not hold.
    QTest::newRow("sharp-s") << u"straße12.kvt"_s << u"strasse"_s << true;
    QTest::newRow("ligature") << u"ﬁnder12.kvt"_s << u"finder"_s << true;
    QTest::newRow("long-s") << u"ma\u017fter12.kvt"_s << u"master"_s << true;
    QTest::newRow("dotless-i") << u"d\u0131esel12.kvt"_s << u"DIESEL"_s << true;
    QTest::newRow("only-in-the-first-token") << u"abcdef_straße.kvt"_s << u"strasse"_s << false;
    QTest::newRow("too-short-for-a-token") << u"aß.kvt"_s << u"ass"_s << false;
}

void TestFolderScan::upperCasedTokenIsLookedAtToo()
{
    QFETCH(QString, name);
    QFETCH(QString, filter);
    QFETCH(bool, passes);
    makeFile(inDir(name));
    QCOMPARE(valuesOf(scan(m_dir->path(), {{}, filter, {}, {}}), u"name"_s),
             passes ? QStringList{name} : QStringList());
}

void TestFolderScan::onlyFiles()
{
    makeFile(inDir(u"a.kvt"_s));
    QVERIFY(QDir().mkpath(inDir(u"folder.kvt"_s)));
    makeFile(inDir(u"folder.kvt/inside.kvt"_s));
    QCOMPARE(::mkfifo(rawInDir("pipe.kvt").constData(), 0600), 0);
    QCOMPARE(sortedNames(scan(m_dir->path())), QStringList({u"a.kvt"_s, u"inside.kvt"_s}));
    QCOMPARE(scan(m_dir->path()), foundByIterator(m_dir->path()));
}

void TestFolderScan::linksAreLeftOut()
{
    makeFile(inDir(u"root/real.kvt"_s));
    makeFile(inDir(u"outside/b.kvt"_s));
    QVERIFY(QFile::link(inDir(u"root/real.kvt"_s), inDir(u"root/link.kvt"_s)));
    QVERIFY(QFile::link(inDir(u"nowhere"_s), inDir(u"root/broken.kvt"_s)));
    QVERIFY(QFile::link(inDir(u"outside"_s), inDir(u"root/folder"_s)));
    QVERIFY(QFile::link(inDir(u"outside"_s), inDir(u"root/folder.kvt"_s)));
    QVERIFY(QFile::link(inDir(u"root"_s), inDir(u"root/parent"_s)));
    QVERIFY(QFile::link(u"loop"_s, inDir(u"root/loop"_s)));
    QVERIFY(QDir().mkdir(inDir(u"root/sub"_s)));
    QVERIFY(QFile::link(u".."_s, inDir(u"root/sub/up"_s)));
    QCOMPARE(valuesOf(scan(inDir(u"root"_s)), u"path"_s), QStringList{inDir(u"root/real.kvt"_s)});
}

void TestFolderScan::linkAsRoot()
{
    makeFile(inDir(u"root/sub/a.kvt"_s));
    QVERIFY(QFile::link(inDir(u"root"_s), inDir(u"link"_s)));
    QCOMPARE(valuesOf(scan(inDir(u"link"_s)), u"path"_s), QStringList{inDir(u"link/sub/a.kvt"_s)});
}

void TestFolderScan::hiddenIsLeftOut()
{
    makeFile(inDir(u"seen.kvt"_s));
    makeFile(inDir(u".hidden.kvt"_s));
    makeFile(inDir(u".folder/a.kvt"_s));
    makeFile(inDir(u"sub/.folder/b.kvt"_s));
    makeFile(inDir(u"..dots/c.kvt"_s));
    QCOMPARE(sortedNames(scan(m_dir->path())), QStringList{u"seen.kvt"_s});
    QCOMPARE(sortedNames(scan(inDir(u".folder"_s))), QStringList{u"a.kvt"_s});
}

void TestFolderScan::notRecursive()
{
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"b.CTZ"_s));
    makeFile(inDir(u"sub/c.kvt"_s));
    QCOMPARE(sortedNames(scan(m_dir->path(), {}, false)), QStringList({u"a.kvt"_s, u"b.CTZ"_s}));
    QCOMPARE(sortedNames(scan(m_dir->path(), {}, true)), QStringList({u"a.kvt"_s, u"b.CTZ"_s, u"c.kvt"_s}));
}

void TestFolderScan::rootSpellings_data()
{
    QTest::addColumn<QString>("root");

    QTest::newRow("relative") << u"root"_s;
    QTest::newRow("relative-slash") << u"root/"_s;
    QTest::newRow("relative-slashes") << u"root//"_s;
    QTest::newRow("dot") << u"./root"_s;
    QTest::newRow("dots") << u"root/../root"_s;
    QTest::newRow("through-sub") << u"root/sub/.."_s;
    QTest::newRow("absolute") << u"%1/root"_s;
    QTest::newRow("absolute-slash") << u"%1/root/"_s;
    QTest::newRow("absolute-dots") << u"%1/./x/../root"_s;
}

void TestFolderScan::rootSpellings()
{
    QFETCH(QString, root);
    makeFile(inDir(u"root/a.kvt"_s));
    makeFile(inDir(u"root/sub/b.kvt"_s));
    QVERIFY(QDir().mkdir(inDir(u"x"_s)));
    QVERIFY(QDir::setCurrent(m_dir->path()));
    const QString given = root.replace(u"%1"_s, m_dir->path());
    const QVariantList hits = scan(given);
    QStringList paths;
    for (const QString &path : valuesOf(hits, u"path"_s)) {
        QVERIFY(QDir::isAbsolutePath(path));
        paths.append(QFileInfo(path).canonicalFilePath());
    }
    paths.sort();
    QCOMPARE(paths, QStringList({inDir(u"root/a.kvt"_s), inDir(u"root/sub/b.kvt"_s)}));
    QCOMPARE(hits, foundByIterator(given));
    for (const QString &part : {u"root/a"_s, u"root//"_s, u"/../"_s, u"./"_s, u"root/sub/b"_s}) {
        QCOMPARE(scan(given, {{}, {}, {}, part}), foundByIterator(given, {{}, {}, {}, part}));
    }
}

void TestFolderScan::noSuchRoot_data()
{
    QTest::addColumn<QString>("root");

    QTest::newRow("missing") << u"missing"_s;
    QTest::newRow("missing-below") << u"missing/below"_s;
    QTest::newRow("file") << u"a.kvt"_s;
    QTest::newRow("file-slash") << u"a.kvt/"_s;
    QTest::newRow("broken-link") << u"broken"_s;
    QTest::newRow("link-loop") << u"loop"_s;
    QTest::newRow("too-long") << QString(300, u'x');
    QTest::newRow("empty-folder") << u"empty"_s;
    QTest::newRow("url") << u"file:///tmp"_s;
}

void TestFolderScan::noSuchRoot()
{
    QFETCH(QString, root);
    makeFile(inDir(u"a.kvt"_s));
    QVERIFY(QDir().mkdir(inDir(u"empty"_s)));
    QVERIFY(QFile::link(inDir(u"nowhere"_s), inDir(u"broken"_s)));
    QVERIFY(QFile::link(inDir(u"loop"_s), inDir(u"loop"_s)));
    QCOMPARE(scan(inDir(root)), QVariantList());
}

void TestFolderScan::limit_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("count");

    QTest::newRow("none") << 0 << 8;
    QTest::newRow("negative") << -1 << 8;
    QTest::newRow("most-negative") << std::numeric_limits<int>::min() << 8;
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("5") << 5 << 5;
    QTest::newRow("7") << 7 << 7;
    QTest::newRow("8") << 8 << 8;
    QTest::newRow("9") << 9 << 8;
    QTest::newRow("largest") << std::numeric_limits<int>::max() << 8;
}

void TestFolderScan::limit()
{
    QFETCH(int, limit);
    QFETCH(int, count);
    for (int index = 0; index < 4; ++index) {
        makeFile(inDir(u"a%1.kvt"_s.arg(index)));
        makeFile(inDir(u"sub/b%1.kvt"_s.arg(index)));
    }
    QCOMPARE(scan(m_dir->path(), {}, true, limit), foundByIterator(m_dir->path()).mid(0, count));
}

void TestFolderScan::limitCountsHits()
{
    for (int index = 0; index < 20; ++index) {
        makeFile(inDir(u"other%1.kvt"_s.arg(index)));
        makeFile(inDir(u"match%1.kvt"_s.arg(index)));
    }
    const Filters filters{u"match"_s, {}, {}, {}};
    QCOMPARE(scan(m_dir->path(), filters, true, 15), foundByIterator(m_dir->path(), filters).mid(0, 15));
    QCOMPARE(scan(m_dir->path(), filters, true, 25).size(), 20);
}

void TestFolderScan::cancelBefore()
{
    makeFile(inDir(u"a.kvt"_s));
    std::atomic<bool> cancel = true;
    QCOMPARE(scan(m_dir->path(), {}, true, 0, &cancel), QVariantList());
    QVERIFY(cancel);
    cancel = false;
    QCOMPARE(scan(m_dir->path(), {}, true, 0, &cancel).size(), 1);
    QVERIFY(!cancel);
}

void TestFolderScan::cancelAmongFilesOfOneFolder()
{
    for (int index = 0; index < 50; ++index)
        makeFile(inDir(u"%1.kvt"_s.arg(index)));
    std::atomic<bool> cancel = false;
    sizesLeft = 7;
    afterSizes = [&cancel] { cancel = true; };
    const QVariantList hits = scan(m_dir->path(), {}, true, 0, &cancel);
    QVERIFY(cancel);
#ifdef KVTEDITOR_PORTABLE_FILES
    QVERIFY(!hits.isEmpty() && hits.size() <= 7);
#else
    QCOMPARE(hits.size(), 7);
#endif
    QCOMPARE(hits, foundByIterator(m_dir->path()).mid(0, hits.size()));
}

void TestFolderScan::cancelDuring()
{
    for (int index = 0; index < 5'000; ++index) {
        makeFile(inDir(u"%1/%2.kvt"_s.arg(index / 100).arg(index)));
    }
    const QVariantList all = foundByIterator(m_dir->path());
    QCOMPARE(all.size(), 5'000);
    for (int round = 0; round < 10; ++round) {
        std::atomic<bool> started = false;
        std::atomic<bool> cancel = false;
        QVariantList hits;
        std::thread worker([&] {
            started = true;
            hits = scan(m_dir->path(), {}, true, 0, &cancel);
        });
        while (!started) {
            std::this_thread::yield();
        }
        for (int turn = 0; turn < round * 100; ++turn) {
            std::this_thread::yield();
        }
        cancel = true;
        worker.join();
        QCOMPARE(hits, all.mid(0, hits.size()));
    }
}

void TestFolderScan::oddNames_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("blanks") << u" my  tune .kvt"_s;
    QTest::newRow("hash") << u"a#b.kvt"_s;
    QTest::newRow("percent") << u"100%20%1.kvt"_s;
    QTest::newRow("question-mark") << u"a?b=c.kvt"_s;
    QTest::newRow("brackets") << u"[a-z] {b}.kvt"_s;
    QTest::newRow("letters") << u"größe é \u65e5\u672c.kvt"_s;
    QTest::newRow("decomposed") << u"e\u0301.kvt"_s;
    QTest::newRow("right-to-left") << u"a\u202etvk.kvt"_s;
    QTest::newRow("newline") << u"a\nb.kvt"_s;
    QTest::newRow("tab") << u"a\tb.kvt"_s;
    QTest::newRow("markup") << u"<b>R&D.kvt"_s;
    QTest::newRow("backslash") << u"a\\b.kvt"_s;
    QTest::newRow("dash") << u"-rf.kvt"_s;
    QTest::newRow("dots-inside") << u"a..b...kvt"_s;
    QTest::newRow("longest") << QString(251, u'x') + u".kvt"_s;
}

void TestFolderScan::oddNames()
{
    QFETCH(QString, name);
    makeFile(inDir(name), "123");
    makeFile(inDir(u"below/"_s + name + u"/"_s + name), "4567");
    const QVariantList hits = scan(m_dir->path());
    QCOMPARE(hits, foundByIterator(m_dir->path()));
    QStringList paths = valuesOf(hits, u"path"_s);
    QCOMPARE(paths.size(), 2);
    QVERIFY(paths.contains(inDir(name)));
    QVERIFY(paths.contains(inDir(u"below/"_s + name + u"/"_s + name)));
    for (const QVariant &hit : hits) {
        QCOMPARE(hit.toMap().value(u"name"_s).toString(), name);
        QVERIFY(QFileInfo::exists(hit.toMap().value(u"path"_s).toString()));
    }
}

void TestFolderScan::nameThatIsNotUtf8()
{
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"\ufffd.kvt"_s));
    QVERIFY(makeRawFile(rawInDir("caf\xe9.kvt")));
    QVERIFY(makeRawFile(rawInDir("\xff\xfe.ctz")));
    QCOMPARE(::mkdir(rawInDir("fold\xe9r").constData(), 0700), 0);
    QVERIFY(makeRawFile(rawInDir("fold\xe9r/b.kvt")));
    const QVariantList hits = scan(m_dir->path());
    const QVariantList ofTheIterator = foundByIterator(m_dir->path());
    // Qt cannot name these, so it could not remove them either.
    for (const char *name : {"fold\xe9r/b.kvt", "caf\xe9.kvt", "\xff\xfe.ctz"}) {
        QCOMPARE(::unlink(rawInDir(name).constData()), 0);
    }
    QCOMPARE(::rmdir(rawInDir("fold\xe9r").constData()), 0);
#ifdef KVTEDITOR_PORTABLE_FILES
    // Qt 6.8's iterator ends at the first such name.
    QCOMPARE(hits, ofTheIterator);
#else
    Q_UNUSED(ofTheIterator)
    QCOMPARE(sortedNames(hits), QStringList({u"a.kvt"_s, u"\ufffd.kvt"_s}));
#endif
}

void TestFolderScan::unreadableFolder()
{
    makeFile(inDir(u"a.kvt"_s));
    makeFile(inDir(u"closed/b.kvt"_s));
    makeFile(inDir(u"closed/below/c.kvt"_s));
    makeFile(inDir(u"open/d.kvt"_s));
    QVERIFY(QFile::setPermissions(inDir(u"closed"_s), {}));
    QVariantList hits;
    QVariantList ofTheFolder;
    {
        const PlainRights rights;
        hits = scan(m_dir->path());
        ofTheFolder = scan(inDir(u"closed"_s));
    }
    QVERIFY(
        QFile::setPermissions(inDir(u"closed"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(sortedNames(hits), QStringList({u"a.kvt"_s, u"d.kvt"_s}));
    QCOMPARE(ofTheFolder, QVariantList());
    QCOMPARE(scan(m_dir->path()).size(), 4);
}

void TestFolderScan::filesThatVanish()
{
    for (int index = 0; index < 200; ++index) {
        makeFile(inDir(u"root/stay%1.kvt"_s.arg(index)));
    }
    std::atomic<bool> stop = false;
    std::thread churn([&stop, this] {
        while (!stop) {
            for (int index = 0; index < 20; ++index)
                makeFile(inDir(u"root/gone%1.kvt"_s.arg(index)));
            for (int index = 0; index < 20; ++index)
                QFile::remove(inDir(u"root/gone%1.kvt"_s.arg(index)));
        }
    });
    QList<qsizetype> counts;
    for (int round = 0; round < 50; ++round) {
        counts.append(valuesOf(scan(inDir(u"root"_s)), u"name"_s).filter(u"stay"_s).size());
    }
    stop = true;
    churn.join();
    QCOMPARE(counts, QList<qsizetype>(50, 200));
}

void TestFolderScan::folderThatVanishes()
{
    for (int index = 0; index < 200; ++index) {
        makeFile(inDir(u"root/stay%1/a%1.kvt"_s.arg(index)));
    }
    std::atomic<bool> stop = false;
    std::thread churn([&stop, folder = inDir(u"root/stay0/churn"_s)] {
        while (!stop) {
            makeFile(folder + u"/sub/other.bin"_s);
            QDir(folder).removeRecursively();
        }
    });
    QList<qsizetype> counts;
    for (int round = 0; round < 50; ++round) {
        counts.append(scan(inDir(u"root"_s)).size());
    }
    stop = true;
    churn.join();
    QCOMPARE(counts, QList<qsizetype>(50, 200));
}

void TestFolderScan::thousandLevels()
{
    const QString deepest = inDir(u"d"_s) + u"/d"_s.repeated(999);
    QVERIFY(QDir().mkpath(deepest));
    makeFile(deepest + u"/deep.kvt"_s, "x");
    makeFile(inDir(u"d/d/shallow.kvt"_s));
    const QVariantList hits = scan(m_dir->path());
    QCOMPARE(hits, foundByIterator(m_dir->path()));
    QCOMPARE(sortedNames(hits), QStringList({u"deep.kvt"_s, u"shallow.kvt"_s}));
    QVERIFY(valuesOf(hits, u"path"_s).contains(deepest + u"/deep.kvt"_s));
}

void TestFolderScan::manyFiles()
{
    // Names of few files, for a file of its own takes far longer to make. A file cannot have more of them.
    constexpr int namesEach = 50'000;
    const int files = isExhaustive() ? 200'000 : 40'000;
    QByteArray file;
    for (int index = 0; index < files; ++index) {
        const QByteArray name = rawInDir(QByteArray::number(index) + (index % 40 == 0 ? ".kvt" : ".bin"));
        QVERIFY(index % namesEach == 0 ? makeRawFile(name) : ::link(file.constData(), name.constData()) == 0);
        if (index % namesEach == 0)
            file = name;
    }
    const QVariantList hits = scan(m_dir->path());
    QCOMPARE(hits.size(), files / 40);
    QCOMPARE(hits, foundByIterator(m_dir->path()));
    const QString last = QString::number(files - 40);
    QCOMPARE(sortedNames(scan(m_dir->path(), {last, {}, {}, {}})), QStringList{last + u".kvt"_s});
}

void TestFolderScan::sameAsIterator_data()
{
    QTest::addColumn<quint32>("seed");

    for (quint32 seed = 1; seed <= 12; ++seed) {
        QTest::addRow("tree-%u", seed) << seed;
    }
}

void TestFolderScan::sameAsIterator()
{
    QFETCH(quint32, seed);
    const QString root = inDir(u"root"_s);
    const RandomTree tree(root, seed);
    const QList<Filters> filterSets{
        {},
        {u"TUNE"_s, {}, {}, {}},
        {u"ö"_s, {}, {}, {}},
        {{}, u"1265"_s, {}, {}},
        {{}, u"ss"_s, {}, {}},
        {{}, u"Finder"_s, {}, {}},
        {{}, {}, u"chevy"_s, {}},
        {{}, {}, {}, u"2014"_s},
        {{}, {}, {}, u"Chevy"_s},
        {u"1"_s, u"s"_s, u"SUB.KVT"_s, u"2"_s},
        {u"never found"_s, {}, {}, {}},
    };
    for (const Filters &filters : filterSets) {
        QCOMPARE(scan(root, filters), foundByIterator(root, filters));
        QCOMPARE(scan(root, filters, false), foundByIterator(root, filters, false));
        QCOMPARE(scan(root, filters, true, 7), foundByIterator(root, filters).mid(0, 7));
    }
    QVERIFY(QDir::setCurrent(root));
    QCOMPARE(scan(u"."_s), foundByIterator(u"."_s));
}

void TestFolderScan::severalThreadsAtOnce()
{
    const RandomTree tree(inDir(u"root"_s), 99);
    const QVariantList expected = foundByIterator(inDir(u"root"_s));
    QList<QVariantList> found(4);
    std::vector<std::thread> threads;
    for (QVariantList &hits : found) {
        threads.emplace_back([&hits, root = inDir(u"root"_s)] { hits = scan(root); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QCOMPARE(found, QList<QVariantList>(4, expected));
}

KVTEDITOR_TEST_MAIN(TestFolderScan)
#include "tst_FolderScan.moc"
