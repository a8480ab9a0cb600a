#include "api/ServiceConfig.h"
#include "app/AppState.h"
#include "support/FormData.h"
#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

/// A deployment that adds fields to requests; read once for the life of a process, hence a program of its
/// own.
class TestAuthFields : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void deploymentFileOfTheEnvironmentIsUsed();
    void workerRequestCarriesThem();
    void informationRequestCarriesThem();
    void requestsOwnFieldsReplaceThem();
    void ticketCarriesThem();
    void updateCheckDoesNot();
    void plainPrimitivesDoNot();
    void statusNeverShowsThem();

private:
    QTemporaryDir m_dir;
    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<AppState> m_state;
};

void TestAuthFields::initTestCase()
{
    QVERIFY(m_dir.isValid());
    const QString path = makeFile(
        m_dir.filePath(u"deployment.json"_s),
        "{\"authFields\":{\"app_user\":\"tester\",\"version\":\"0.0\",\"zz_key\":\"TOPSECRET\"},"
        "\"apiBase\":\"https://deployed.example/api/\",\"placeholderEmail\":\"nobody@deployed.invalid\"}");
    qputenv("KVTEDITOR_SERVICE_CONFIG", QFile::encodeName(path));
}

void TestAuthFields::init()
{
    QTest::failOnWarning(QRegularExpression(u"TOPSECRET"_s));
    m_server = std::make_unique<RawHttpServer>();
    m_state = std::make_unique<AppState>();
    m_state->findChild<VoxApiClient *>()->setApiBase(m_server->baseUrl());
}

void TestAuthFields::cleanup()
{
    m_state.reset();
    m_server.reset();
}

void TestAuthFields::deploymentFileOfTheEnvironmentIsUsed()
{
    QCOMPARE(serviceConfig().apiBase, u"https://deployed.example/api/"_s);
    const VoxApiClient client;
    QCOMPARE(client.url(u"x"_s), u"https://deployed.example/api/x"_s);
}

void TestAuthFields::workerRequestCarriesThem()
{
    m_state->workerConvert(u"convert_x"_s, "input", u"in.kvt"_s, {{u"m"_s, u"1"_s}}, {}, u"out.bin"_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QByteArrayList dispositions;
    const QList<FormPart> parts = formParts(m_server->request(0));
    for (const FormPart &part : parts) {
        dispositions.append(part.header("Content-Disposition").mid(11));
    }
    QCOMPARE(dispositions,
             QByteArrayList({"name=\"app_user\"", "name=\"m\"", "name=\"operation\"", "name=\"version\"",
                             "name=\"zz_key\"", "name=\"file\"; filename=\"in.kvt\""}));
    QCOMPARE(formField(m_server->request(0), "app_user"), QByteArray("tester"));
    QCOMPARE(formField(m_server->request(0), "zz_key"), QByteArray("TOPSECRET"));
}

void TestAuthFields::informationRequestCarriesThem()
{
    m_state->openKvt(makeFile(m_dir.filePath(u"truck.kvt"_s), "bytes"));
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(formParts(m_server->request(0)).size(), 5);
    QCOMPARE(formField(m_server->request(0), "zz_key"), QByteArray("TOPSECRET"));
}

void TestAuthFields::requestsOwnFieldsReplaceThem()
{
    m_state->workerConvert(u"convert_x"_s, "input", u"in.kvt"_s, {{u"app_user"_s, u"own"_s}}, {},
                           u"out.bin"_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QCOMPARE(formField(m_server->request(0), "app_user"), QByteArray("own"));
    QCOMPARE(formField(m_server->request(0), "version"), QByteArray("4.0.2"));
    m_state->sendToDev({}, u"note"_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 2);
    const QJsonObject ticket = QJsonDocument::fromJson(m_server->request(1).body).object();
    QCOMPARE(ticket.value(u"version"_s).toString(), u"4.0.2"_s);
}

void TestAuthFields::ticketCarriesThem()
{
    m_state->sendToDev({}, u"note"_s);
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    const QJsonObject ticket = QJsonDocument::fromJson(m_server->request(0).body).object();
    QCOMPARE(ticket.value(u"app_user"_s).toString(), u"tester"_s);
    QCOMPARE(ticket.value(u"zz_key"_s).toString(), u"TOPSECRET"_s);
    QCOMPARE(ticket.value(u"email"_s).toString(), u"nobody@deployed.invalid"_s);
    QCOMPARE(ticket.value(u"type"_s).toString(), u"dev"_s);
    QCOMPARE(ticket.size(), 8);
}

void TestAuthFields::updateCheckDoesNot()
{
    m_state->checkUpdate();
    WAIT_COMPARE(m_server->completeRequestCount(), 1);
    QVERIFY(!m_server->request(0).head.contains("TOPSECRET"));
    QCOMPARE(m_server->request(0).requestLine(),
             QByteArray("GET /api/updates/kvteditornew/update.json HTTP/1.1"));
    QCOMPARE(m_server->request(0).body, QByteArray());
}

void TestAuthFields::plainPrimitivesDoNot()
{
    auto *client = m_state->findChild<VoxApiClient *>();
    int calls = 0;
    client->postJson(u"x"_s, {{u"a"_s, 1}}, [&](const QJsonObject &, const QString &) { ++calls; });
    WAIT_COMPARE(calls, 1);
    client->postMultipart(u"x"_s, {{u"a"_s, 1}}, {},
                          [&](const QByteArray &, const QJsonObject &, const QString &) { ++calls; });
    WAIT_COMPARE(calls, 2);
    QCOMPARE(m_server->request(0).body, QByteArray("{\"a\":1}"));
    QCOMPARE(formParts(m_server->request(1)).size(), 1);
}

void TestAuthFields::statusNeverShowsThem()
{
    m_server->answerAlways({QByteArray()});
    m_state->workerConvert(u"convert_x"_s, "input", u"in.kvt"_s, {}, {}, u"out.bin"_s);
    WAIT_COMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->status().contains(u"TOPSECRET"_s));
    m_state->setStatus({});
    m_state->sendToDev({}, u"note"_s);
    WAIT_COMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_state->status().contains(u"TOPSECRET"_s));
}

KVTEDITOR_TEST_MAIN(TestAuthFields)
#include "tst_AuthFields.moc"
