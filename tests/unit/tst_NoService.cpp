#include "api/ServiceConfig.h"
#include "app/AppState.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

/// A service configuration that cannot be used; read once for the life of a process, hence a program of its
/// own.
class TestNoService : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void statusSaysWhy();
    void nothingIsSent();
    void pagesOfTheServiceAreRefused();
    void otherPagesOpen();

private:
    QTemporaryDir m_dir;
    QString m_reason;
};

void TestNoService::initTestCase()
{
    const QString path = makeFile(m_dir.filePath(u"service.json"_s), "[]");
    qputenv("KVTEDITOR_SERVICE_CONFIG", QFile::encodeName(path));
    m_reason = u"Service configuration %1 is not used: it is no JSON object"_s.arg(path);
    QTest::ignoreMessage(QtWarningMsg, qPrintable(m_reason));
    QCOMPARE(serviceConfig().refusal, m_reason);
}

void TestNoService::statusSaysWhy()
{
    const AppState state;
    QCOMPARE(state.status(), m_reason);
    QCOMPARE(state.statusOK(), 0);
}

void TestNoService::nothingIsSent()
{
    VoxApiClient client;
    int sent = 0;
    connect(&client, &VoxApiClient::requestSent, this, [&sent] { ++sent; });
    QStringList reasons;
    const auto json = [&reasons](const QJsonObject &, const QString &error) { reasons.append(error); };
    const auto bytes = [&reasons](const QByteArray &, const QJsonObject &, const QString &error) {
        reasons.append(error);
    };
    client.postJson(u"a.aspx"_s, {}, json);
    client.getJson(u"b.json"_s, json);
    client.postMultipart(u"c.aspx"_s, {}, {}, bytes);
    client.downloadFile(u"http://127.0.0.1:9/d"_s, bytes);
    // Callbacks never come before the call returns.
    QCOMPARE(reasons, QStringList());
    WAIT_COMPARE(reasons.size(), 4);
    QCOMPARE(reasons, QStringList(4, m_reason));
    QCOMPARE(sent, 0);
}

void TestNoService::pagesOfTheServiceAreRefused()
{
    const UrlRecorder desktop;
    AppState state;
    state.setStatus(u"before"_s, 1);
    state.openWebTool(state.serviceUrl(u"page.aspx"_s), u"Page"_s);
    QCOMPARE(state.status(), m_reason);
    QCOMPARE(state.statusOK(), 0);
    QCOMPARE(desktop.opened, QList<QUrl>());
}

void TestNoService::otherPagesOpen()
{
    const UrlRecorder desktop;
    AppState state;
    state.openWebTool(u"https://other.example/"_s, u"Shop"_s);
    QCOMPARE(state.status(), u"Opened Shop."_s);
    QCOMPARE(state.statusOK(), 1);
}

KVTEDITOR_TEST_MAIN(TestNoService)
#include "tst_NoService.moc"
