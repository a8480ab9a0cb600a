#include "DevService.h"
#include "Exchange.h"
#include "SampleData.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

const QString knownOs = u"12650014"_s;
constexpr qsizetype flashSize = 65536;

QJsonObject account()
{
    return {{u"email"_s, u"demo@vox.invalid"_s}, {u"password"_s, u"demo"_s}};
}

QString base64(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

} // namespace

class TestDevStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void loginGivesTokenAndCredits();
    void everyLoginIsASessionOfTheSameAccount();
    void catalogOfEverySampleFile_data();
    void catalogOfEverySampleFile();
    void catalogItem();
    void catalogOfAnUnknownOsIsEmpty();
    void downloadTakesCredits();
    void freeDownloadTakesNone();
    void downloadWithoutCreditsTakesNone();
    void patchesAreListed();
    void patchesOfAnUnknownOsAreNone();
    void patchChangesTheDocumentedBytes_data();
    void patchChangesTheDocumentedBytes();
    void patchWithoutBytesSendsNoFile();
    void refusedPatchTakesNoCredits_data();
    void refusedPatchTakesNoCredits();
    void jsonRefusals_data();
    void jsonRefusals();
    void downloadRefusals_data();
    void downloadRefusals();

private:
    Outcome send(const QString &path, const QJsonObject &body);
    Outcome download(const QByteArray &token, const QByteArray &id);
    QJsonObject patch(const QString &id, const QByteArray &bin);
    int credits();

    QTemporaryDir m_samples;
    std::unique_ptr<DevService> m_service;
    QString m_token;
};

void TestDevStore::initTestCase()
{
    QVERIFY(SampleData::generate(m_samples.path()));
}

void TestDevStore::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
    m_token = send(u"xdf/login.aspx"_s, account()).json().value("session_token"_L1).toString();
    QVERIFY(!m_token.isEmpty());
}

void TestDevStore::cleanup()
{
    m_service.reset();
}

Outcome TestDevStore::send(const QString &path, const QJsonObject &body)
{
    return post(m_service->apiBase() + path, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

Outcome TestDevStore::download(const QByteArray &token, const QByteArray &id)
{
    return postParts(m_service->apiBase() + "xdf/download.aspx"_L1, {{"id", id}, {"session_token", token}},
                     {});
}

QJsonObject TestDevStore::patch(const QString &id, const QByteArray &bin)
{
    const QJsonObject body = {{u"session_token"_s, m_token},
                              {u"patch_id"_s, id},
                              {u"file_data"_s, base64(bin)},
                              {u"cal_id"_s, knownOs}};
    return send(u"patches/patch_process.aspx"_s, body).json();
}

int TestDevStore::credits()
{
    return send(u"xdf/login.aspx"_s, account()).json().value("credits"_L1).toInt(-1);
}

void TestDevStore::loginGivesTokenAndCredits()
{
    const QJsonObject json = send(u"xdf/login.aspx"_s, account()).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QVERIFY(!json.value("session_token"_L1).toString().isEmpty());
    QVERIFY(json.value("credits"_L1).isDouble());
    QCOMPARE(json.value("credits"_L1).toInt(), 40);
}

void TestDevStore::everyLoginIsASessionOfTheSameAccount()
{
    const QString other = send(u"xdf/login.aspx"_s, account()).json().value("session_token"_L1).toString();
    QVERIFY(other != m_token);
    QCOMPARE(download(other.toLatin1(), "12650014-1").status, 200);
    QCOMPARE(download(m_token.toLatin1(), "12650014-1").status, 200);
    QCOMPARE(credits(), 30);
}

void TestDevStore::catalogOfEverySampleFile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"one-module.kvt", "two-modules.kvt", "five-modules.kvt", "donor.kvt", "one-module.ctz"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestDevStore::catalogOfEverySampleFile()
{
    QFETCH(QString, name);
    QFile file(m_samples.filePath(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const Outcome info = postForm(m_service->apiBase() + "kvt_worker/process.aspx"_L1,
                                  {{"operation", "kvt_info"}, {"version", "4.0.2"}}, file.readAll());
    const QString os = info.json().value("modules"_L1)[0]["mainOs"_L1].toString();
    const QJsonObject order = {{u"session_token"_s, m_token}, {u"os_id"_s, os}};
    const QJsonArray items = send(u"xdf/catalog.aspx"_s, order).json().value("items"_L1).toArray();
    QCOMPARE(items.size(), 4);
    for (const QJsonValue &item : items)
        QCOMPARE(item["os_id"_L1].toString(), os);
    const QJsonObject listing = {{u"session_token"_s, m_token}, {u"cal_id"_s, os}};
    const QJsonObject patches = send(u"patches/patches.aspx"_s, listing).json();
    QCOMPARE(patches.value("patches"_L1).toArray().size(), 5);
    const QJsonObject search = {{u"os"_s, os}};
    QCOMPARE(send(u"stock/list.aspx"_s, search).json().value("files"_L1).toArray().size(), 1);
}

void TestDevStore::catalogItem()
{
    const QJsonObject order = {{u"session_token"_s, m_token}, {u"os_id"_s, knownOs}};
    const QJsonObject json = send(u"xdf/catalog.aspx"_s, order).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("items"_L1)[1].toObject(),
             QJsonObject({{u"id"_s, u"12650014-2"_s},
                          {u"title"_s, u"Fuel and spark 12650014"_s},
                          {u"os_id"_s, knownOs},
                          {u"credits"_s, 10}}));
}

void TestDevStore::catalogOfAnUnknownOsIsEmpty()
{
    for (const QString &os : {u"99999999"_s, QString()}) {
        const QJsonObject order = {{u"session_token"_s, m_token}, {u"os_id"_s, os}};
        const Outcome outcome = send(u"xdf/catalog.aspx"_s, order);
        QCOMPARE(outcome.status, 200);
        QVERIFY(outcome.json().value("items"_L1).isArray());
        QCOMPARE(outcome.json().value("items"_L1).toArray().size(), 0);
    }
}

void TestDevStore::downloadTakesCredits()
{
    const Outcome outcome = download(m_token.toLatin1(), "12650014-2");
    QCOMPARE(outcome.status, 200);
    QCOMPARE(outcome.contentType, "application/octet-stream");
    QXmlStreamReader reader(outcome.body);
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.attributes().value("title"_L1), u"Fuel and spark 12650014"_s);
    QCOMPARE(reader.attributes().value("os"_L1), knownOs);
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.attributes().value("name"_L1), u"System"_s);
    QCOMPARE(credits(), 30);
}

void TestDevStore::freeDownloadTakesNone()
{
    QCOMPARE(download(m_token.toLatin1(), "12650014-3").status, 200);
    QCOMPARE(credits(), 40);
}

void TestDevStore::downloadWithoutCreditsTakesNone()
{
    for (int left = 30; left >= 0; left -= 10) {
        QCOMPARE(download(m_token.toLatin1(), "12650014-2").status, 200);
        QCOMPARE(credits(), left);
    }
    QCOMPARE(download(m_token.toLatin1(), "12650014-1").status, 402);
    QCOMPARE(credits(), 0);
    QCOMPARE(download(m_token.toLatin1(), "12650014-3").status, 200);
}

void TestDevStore::patchesAreListed()
{
    download(m_token.toLatin1(), "12650014-1");
    const QJsonObject order = {{u"session_token"_s, m_token}, {u"cal_id"_s, knownOs}};
    const QJsonObject json = send(u"patches/patches.aspx"_s, order).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("credits"_L1).toInt(), 35);
    QCOMPARE(json.value("patches"_L1)[1].toObject(),
             QJsonObject({{u"id"_s, 302},
                          {u"variant"_s, u"Idle speed"_s},
                          {u"description"_s, u"Writes 4 bytes at offset 0x0240"_s},
                          {u"credits_cost"_s, 10}}));
}

void TestDevStore::patchesOfAnUnknownOsAreNone()
{
    const QJsonObject order = {{u"session_token"_s, m_token}, {u"cal_id"_s, u"99999999"_s}};
    const QJsonObject json = send(u"patches/patches.aspx"_s, order).json();
    QVERIFY(json.value("patches"_L1).isArray());
    QCOMPARE(json.value("patches"_L1).toArray().size(), 0);
    QCOMPARE(json.value("credits"_L1).toInt(), 40);
}

void TestDevStore::patchChangesTheDocumentedBytes_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<qsizetype>("offset");
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<int>("left");
    const QByteArray speed("\xff\xff", 2);
    const QByteArray idle("\x02\xbc\x02\xbc", 4);
    QTest::newRow("speed-limit") << u"301"_s << flashSize << qsizetype(0x100) << speed << 35;
    QTest::newRow("idle-speed") << u"302"_s << flashSize << qsizetype(0x240) << idle << 30;
    QTest::newRow("marker") << u"303"_s << flashSize << qsizetype(0) << QByteArray("KVTPATCH") << 40;
    QTest::newRow("at-the-end") << u"301"_s << qsizetype(0x102) << qsizetype(0x100) << speed << 35;
}

void TestDevStore::patchChangesTheDocumentedBytes()
{
    QFETCH(QString, id);
    QFETCH(qsizetype, size);
    QFETCH(qsizetype, offset);
    QFETCH(QByteArray, written);
    QFETCH(int, left);
    QByteArray expected(size, '\x11');
    const QJsonObject json = patch(id, expected);
    expected.replace(offset, written.size(), written);
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("file_data"_L1).toString(), base64(expected));
    QCOMPARE(json.value("credits"_L1).toInt(), left);
    QCOMPARE(credits(), left);
}

void TestDevStore::patchWithoutBytesSendsNoFile()
{
    const QJsonObject json = patch(u"304"_s, "x");
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("message"_L1).toString(), u"Changes nothing"_s);
    QCOMPARE(json.value("file_data"_L1), QJsonValue(QString()));
}

void TestDevStore::refusedPatchTakesNoCredits_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QByteArray>("bin");
    QTest::addColumn<QString>("error");
    QTest::newRow("too-short") << u"301"_s << QByteArray(0x101, 'x')
                               << u"The BIN is too short for this patch"_s;
    QTest::newRow("too-dear") << u"305"_s << QByteArray(flashSize, 'x') << u"Not enough credits"_s;
    QTest::newRow("unknown-patch") << u"300"_s << QByteArray("x") << u"No patch 300 for 12650014"_s;
    QTest::newRow("no-number") << u"x"_s << QByteArray("x") << u"No patch x for 12650014"_s;
    QTest::newRow("empty-bin") << u"301"_s << QByteArray() << u"file_data holds no Base64"_s;
}

void TestDevStore::refusedPatchTakesNoCredits()
{
    QFETCH(QString, id);
    QFETCH(QByteArray, bin);
    QFETCH(QString, error);
    const QJsonObject json = patch(id, bin);
    QCOMPARE(json.value("status"_L1).toString(), u"error"_s);
    QCOMPARE(json.value("error"_L1).toString(), error);
    QVERIFY(!json.contains("file_data"_L1));
    QCOMPARE(credits(), 40);
}

void TestDevStore::jsonRefusals_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    const QString login = u"xdf/login.aspx"_s;
    const auto wrongLogin = [&login](const char *name, const QString &email, const QString &password) {
        QTest::newRow(name) << login << QJsonObject{{u"email"_s, email}, {u"password"_s, password}} << 200
                            << u"Wrong e-mail or password"_s;
    };
    wrongLogin("wrong-password", u"demo@vox.invalid"_s, u"Demo"_s);
    wrongLogin("wrong-email", u"demo"_s, u"demo"_s);
    wrongLogin("empty-login", QString(), QString());

    struct Call
    {
        QString path;
        QStringList members;
        int missingStatus;
        int signedOutStatus;
    };
    const Call calls[] = {
        {login, {u"email"_s, u"password"_s}, 200, 0},
        {u"xdf/catalog.aspx"_s, {u"session_token"_s, u"os_id"_s}, 400, 403},
        {u"patches/patches.aspx"_s, {u"session_token"_s, u"cal_id"_s}, 400, 403},
        {u"patches/patch_process.aspx"_s,
         {u"session_token"_s, u"patch_id"_s, u"file_data"_s, u"cal_id"_s},
         200,
         200},
    };
    for (const Call &call : calls) {
        QJsonObject whole;
        for (const QString &member : call.members)
            whole.insert(member, u"x"_s);
        for (const QString &member : call.members) {
            QJsonObject without = whole;
            without.remove(member);
            QTest::newRow(qPrintable(call.path + ":without-"_L1 + member))
                << call.path << without << call.missingStatus << "No "_L1 + member;
        }
        if (call.signedOutStatus != 0)
            QTest::newRow(qPrintable(call.path + ":signed-out"_L1))
                << call.path << whole << call.signedOutStatus << u"Not signed in"_s;
    }
    // "TOKEN" becomes the token of the session.
    const QString process = u"patches/patch_process.aspx"_s;
    const auto wrongPatch = [&process](const char *name, const QString &data, const QString &os,
                                       const QString &error) {
        QTest::newRow(name) << process
                            << QJsonObject{{u"session_token"_s, u"TOKEN"_s},
                                           {u"patch_id"_s, u"301"_s},
                                           {u"file_data"_s, data},
                                           {u"cal_id"_s, os}}
                            << 200 << error;
    };
    wrongPatch("patch-no-base64", u"#*!"_s, knownOs, u"file_data holds no Base64"_s);
    wrongPatch("patch-unknown-os", u"eA=="_s, u"99999999"_s, u"No patch 301 for 99999999"_s);
}

void TestDevStore::jsonRefusals()
{
    QFETCH(QString, path);
    QFETCH(QJsonObject, body);
    QFETCH(int, status);
    QFETCH(QString, error);
    if (body.value("session_token"_L1) == u"TOKEN"_s)
        body.insert(u"session_token"_s, m_token);
    const Outcome outcome = send(path, body);
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.json().value("status"_L1).toString(), u"error"_s);
    QCOMPARE(outcome.json().value("error"_L1).toString(), error);
    QVERIFY(!outcome.json().contains("session_token"_L1));
}

void TestDevStore::downloadRefusals_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    const std::pair<QByteArray, QByteArray> token = {"session_token", "TOKEN"};
    QTest::newRow("no-token") << Fields{{"id", "12650014-1"}} << 400 << u"No session_token"_s;
    QTest::newRow("no-id") << Fields{token} << 400 << u"No id"_s;
    QTest::newRow("signed-out") << Fields{{"session_token", ""}, {"id", "12650014-1"}} << 403
                                << u"Not signed in"_s;
    QTest::newRow("other-token") << Fields{{"session_token", "demo-session-9"}, {"id", "12650014-1"}} << 403
                                 << u"Not signed in"_s;
    QTest::newRow("unknown-item") << Fields{token, {"id", "12650014-9"}} << 404
                                  << u"No such item: 12650014-9"_s;
    QTest::newRow("empty-item") << Fields{token, {"id", ""}} << 404 << u"No such item: "_s;
    QTest::newRow("too-dear") << Fields{token, {"id", "12650014-4"}} << 402 << u"Not enough credits"_s;
}

void TestDevStore::downloadRefusals()
{
    QFETCH(Fields, fields);
    QFETCH(int, status);
    QFETCH(QString, error);
    for (auto &[name, value] : fields) {
        if (value == "TOKEN")
            value = m_token.toLatin1();
    }
    const Outcome outcome = postParts(m_service->apiBase() + "xdf/download.aspx"_L1, fields, {});
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.json().value("error"_L1).toString(), error);
    QCOMPARE(credits(), 40);
}

KVTEDITOR_TEST_MAIN(TestDevStore)
#include "tst_DevStore.moc"
