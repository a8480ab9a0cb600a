#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

class TestSearchHits : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void opens_data();
    void opens();
    void outOfRange();
    void staysOnMain();
    void vanishedFile();
    void secondHitAfterFirst();

private:
    QString inDir(const QString &name) const { return m_dir->filePath(name); }
    void make(const QString &name) const { makeFile(inDir(name), "tune"); }
    /// Fills the list with the folder's files.
    bool scan()
    {
        m_state->scanFolder(m_dir->path(), true, {}, {}, {}, {});
        return waitUntil([this] { return !m_state->searchBusy(); });
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AppState> m_state;
};

void TestSearchHits::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<RawHttpServer>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
    m_state->setTab(u"search"_s);
}

void TestSearchHits::cleanup()
{
    m_state.reset();
    m_server.reset();
    m_dir.reset();
}

void TestSearchHits::opens_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("opened");

    QTest::newRow("kvt") << u"a.kvt"_s << true;
    QTest::newRow("KVT") << u"a.KVT"_s << true;
    QTest::newRow("KvT") << u"a.KvT"_s << true;
    QTest::newRow("odd-name") << u"a #1 100%20 <b>é\n.kvt"_s << true;
    QTest::newRow("ctz") << u"a.ctz"_s << false;
    QTest::newRow("kvt-inside") << u"a.kvt.ctz"_s << false;
}

void TestSearchHits::opens()
{
    QFETCH(QString, name);
    QFETCH(bool, opened);
    make(name);
    QVERIFY(scan());
    QSignalSpy tabs(m_state.get(), &AppState::tabChanged);
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    m_state->openSearchHit(0);
    QCOMPARE(m_state->tab(), opened ? u"main"_s : u"search"_s);
    QCOMPARE(tabs.count(), opened ? 1 : 0);
    QCOMPARE(m_state->fileName(), opened ? name : QString());
    QCOMPARE(m_state->currentKvtBytes(), opened ? QByteArray("tune") : QByteArray());
    QCOMPARE(statuses.isEmpty(), !opened);
    QCOMPARE(m_state->searchHits().size(), 1);
    WAIT_VERIFY(m_state->findChild<VoxApiClient *>()->children().isEmpty());
    QCOMPARE(m_server->requestCount(), opened ? 1 : 0);
}

void TestSearchHits::outOfRange()
{
    m_state->openSearchHit(0);
    make(u"a.kvt"_s);
    make(u"b.kvt"_s);
    QVERIFY(scan());
    QSignalSpy statuses(m_state.get(), &AppState::statusChanged);
    for (const int index : {-1, 2, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        m_state->openSearchHit(index);
    }
    QCOMPARE(statuses.count(), 0);
    QCOMPARE(m_state->tab(), u"search"_s);
    QCOMPARE(m_state->fileName(), QString());
}

void TestSearchHits::staysOnMain()
{
    make(u"a.kvt"_s);
    QVERIFY(scan());
    m_state->setTab(u"main"_s);
    QSignalSpy tabs(m_state.get(), &AppState::tabChanged);
    m_state->openSearchHit(0);
    QCOMPARE(m_state->fileName(), u"a.kvt"_s);
    QCOMPARE(m_state->tab(), u"main"_s);
    QCOMPARE(tabs.count(), 0);
}

void TestSearchHits::vanishedFile()
{
    make(u"a.kvt"_s);
    QVERIFY(scan());
    QVERIFY(QFile::remove(inDir(u"a.kvt"_s)));
    m_state->openSearchHit(0);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->fileName(), QString());
    QCOMPARE(m_state->tab(), u"main"_s);
    QCOMPARE(m_state->searchHits().size(), 1);
}

void TestSearchHits::secondHitAfterFirst()
{
    make(u"a.kvt"_s);
    make(u"b.kvt"_s);
    QVERIFY(scan());
    QCOMPARE(m_state->searchHits().size(), 2);
    for (const int index : {0, 1, 0}) {
        const QVariantMap hit = m_state->searchHits().at(index).toMap();
        m_state->setTab(u"search"_s);
        m_state->openSearchHit(index);
        QCOMPARE(m_state->fileName(), hit.value(u"name"_s).toString());
        QCOMPARE(m_state->tab(), u"main"_s);
    }
}

KVTEDITOR_TEST_MAIN(TestSearchHits)
#include "tst_SearchHits.moc"
