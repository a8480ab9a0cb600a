#include "core/FolderRows.h"

#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestFolderRows : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void order_data();
    void order();
    void facts();
    void patterns();
    void foldersOnly();
    void path_data();
    void path();
    void emptyWhileAnotherFolderIsRead();
    void changesOnDisk();
    void noFolder();

private:
    QString in(const QString &name) const { return m_folder->filePath(name); }
    void make(const QString &name, qsizetype size) const { makeFile(in(name), QByteArray(size, '\0')); }
    void waitFor(const QStringList &names);
    QStringList names() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FolderRows> m_rows;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestFolderRows::init()
{
    m_tester.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_rows = std::make_unique<FolderRows>();
    m_tester = std::make_unique<QAbstractItemModelTester>(m_rows.get());
    make(u"b10.kvt"_s, 1);
    make(u"B9.KVT"_s, 3);
    make(u"a.bin"_s, 2);
    make(u".hidden.kvt"_s, 2);
    QVERIFY(QDir(m_folder->path()).mkpath(u"z/inner"_s));
    QVERIFY(QDir(m_folder->path()).mkpath(u"d%41 #1?"_s));
}

QStringList TestFolderRows::names() const
{
    QStringList names;
    for (int row = 0; row < m_rows->rowCount(); ++row)
        names.append(m_rows->nameAt(row));
    return names;
}

void TestFolderRows::waitFor(const QStringList &wanted)
{
    WAIT_COMPARE(names(), wanted);
    QVERIFY(!m_rows->isReading());
}

void TestFolderRows::order_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<QStringList>("names");

    const QString odd = u"d%41 #1?"_s;
    QTest::newRow("own") << QString() << false
                         << QStringList{odd, u"z"_s, u"a.bin"_s, u"B9.KVT"_s, u"b10.kvt"_s};
    QTest::newRow("name") << u"name"_s << false
                          << QStringList{odd, u"z"_s, u"a.bin"_s, u"B9.KVT"_s, u"b10.kvt"_s};
    QTest::newRow("name-down") << u"name"_s << true
                               << QStringList{u"z"_s, odd, u"b10.kvt"_s, u"B9.KVT"_s, u"a.bin"_s};
    QTest::newRow("size") << u"size"_s << false
                          << QStringList{odd, u"z"_s, u"b10.kvt"_s, u"a.bin"_s, u"B9.KVT"_s};
    QTest::newRow("size-down") << u"size"_s << true
                               << QStringList{u"z"_s, odd, u"B9.KVT"_s, u"a.bin"_s, u"b10.kvt"_s};
    QTest::newRow("modified") << u"modified"_s << false << QStringList{u"a.bin"_s, u"b10.kvt"_s, u"B9.KVT"_s};
    QTest::newRow("modified-down") << u"modified"_s << true
                                   << QStringList{u"B9.KVT"_s, u"b10.kvt"_s, u"a.bin"_s};
}

void TestFolderRows::order()
{
    QFETCH(QString, key);
    QFETCH(bool, descending);
    QFETCH(QStringList, names);
    const QDateTime now = QDateTime::currentDateTime();
    int age = -60;
    for (const QString &name : {u"a.bin"_s, u"b10.kvt"_s, u"B9.KVT"_s}) {
        QFile file(in(name));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(now.addSecs(age++), QFileDevice::FileModificationTime));
    }
    m_rows->setPath(m_folder->path());
    WAIT_COMPARE(m_rows->rowCount(), 5);
    m_rows->setProperty("key", key);
    m_rows->setProperty("descending", descending);
    QStringList shown = this->names();
    if (names.size() < shown.size())
        shown = shown.sliced(2);
    QCOMPARE(shown, names);
    QVERIFY(m_rows->isFolder(0) && m_rows->isFolder(1) && !m_rows->isFolder(2));
}

void TestFolderRows::facts()
{
    m_rows->setPath(m_folder->path());
    WAIT_COMPARE(m_rows->rowCount(), 5);
    const int row = m_rows->rowOf(u"B9.KVT"_s);
    const auto value = [&](const char *role) {
        return m_rows->data(m_rows->index(row), m_rows->roleNames().key(role));
    };
    QCOMPARE(value("name"), QVariant(u"B9.KVT"_s));
    QCOMPARE(value("size"), QVariant(qint64(3)));
    QCOMPARE(value("modified"), QVariant(QFileInfo(in(u"B9.KVT"_s)).lastModified()));
    QCOMPARE(value("isFolder"), QVariant(false));
    QCOMPARE(m_rows->rowOf(u"b9.kvt"_s), -1);
    QCOMPARE(m_rows->nameAt(5), QString());
    QVERIFY(!m_rows->isFolder(-1));
}

void TestFolderRows::patterns()
{
    m_rows->setProperty("patterns", QStringList{u"*.kvt"_s, u"*.xyz"_s});
    m_rows->setPath(m_folder->path());
    waitFor({u"d%41 #1?"_s, u"z"_s, u"B9.KVT"_s, u"b10.kvt"_s});
    m_rows->setProperty("patterns", QStringList{u"*"_s});
    waitFor({u"d%41 #1?"_s, u"z"_s, u"a.bin"_s, u"B9.KVT"_s, u"b10.kvt"_s});
}

void TestFolderRows::foldersOnly()
{
    m_rows->setProperty("foldersOnly", true);
    m_rows->setPath(m_folder->path());
    waitFor({u"d%41 #1?"_s, u"z"_s});
}

void TestFolderRows::path_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("path");

    QTest::newRow("plain") << u"/z"_s << u"/z"_s;
    QTest::newRow("above") << u"/z/inner/../.."_s << QString();
    QTest::newRow("same") << u"/./z/"_s << u"/z"_s;
    QTest::newRow("beyond-the-root") << u"/../../../../../../../.."_s << u"/"_s;
    QTest::newRow("odd") << u"/d%41 #1?"_s << u"/d%41 #1?"_s;
}

void TestFolderRows::path()
{
    QFETCH(QString, given);
    QFETCH(QString, path);
    m_rows->setPath(m_folder->path() + given);
    QCOMPARE(m_rows->path(), path == "/"_L1 ? path : m_folder->path() + path);
    QCOMPARE(m_rows->pathOf(u"inner/../a.kvt"_s), QDir(m_rows->path()).filePath(u"a.kvt"_s));
    QCOMPARE(m_rows->pathOf(u"/x/../y"_s), u"/y"_s);
    WAIT_VERIFY(!m_rows->isReading());
}

void TestFolderRows::emptyWhileAnotherFolderIsRead()
{
    m_rows->setPath(m_folder->path());
    QVERIFY(m_rows->isReading());
    WAIT_COMPARE(m_rows->rowCount(), 5);
    m_rows->setPath(in(u"z"_s));
    QCOMPARE(m_rows->rowCount(), 0);
    QVERIFY(m_rows->isReading());
    // The last one of several counts.
    m_rows->setPath(m_folder->path());
    m_rows->setPath(in(u"z"_s));
    waitFor({u"inner"_s});
}

void TestFolderRows::changesOnDisk()
{
    m_rows->setPath(in(u"z"_s));
    waitFor({u"inner"_s});
    const QSignalSpy resets(m_rows.get(), &QAbstractItemModel::modelReset);
    make(u"z/new.kvt"_s, 1);
    waitFor({u"inner"_s, u"new.kvt"_s});
    QVERIFY(!resets.isEmpty());
    QVERIFY(QFile::remove(in(u"z/new.kvt"_s)));
    waitFor({u"inner"_s});
}

void TestFolderRows::noFolder()
{
    m_rows->setPath(in(u"missing"_s));
    QVERIFY(m_rows->isReading());
    WAIT_VERIFY(!m_rows->isReading());
    QCOMPARE(m_rows->rowCount(), 0);
}

KVTEDITOR_TEST_MAIN(TestFolderRows)
#include "tst_FolderRows.moc"
