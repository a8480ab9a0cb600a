#include "SampleData.h"
#include "ServiceTest.h"
#include "support/TestMain.h"

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

/// Definition files and patches, paid with the credits of one account.
class TestDevStore : public ServiceTest
{
    Q_OBJECT

private slots:
    void init();
    void everyLoginIsASessionOfTheSameAccount();
    void everySampleFileHasItsOffers();
    void offersOfAnUnknownOsAreNone();
    void downloadTakesCredits();
    void downloadWithoutCreditsTakesNone();
    void patchChangesTheDocumentedBytes_data();
    void patchChangesTheDocumentedBytes();
    void patchWithoutBytesSendsNoFile();
    void jsonRefusals_data();
    void jsonRefusals();
    void downloadRefusals_data();
    void downloadRefusals();

private:
    /// In the session of the test.
    QJsonObject ask(const QString &endpoint, const QString &key, const QString &value);
    /// Without a token, in the session of the test.
    Outcome download(const QByteArray &id, const QString &token = {});
    QJsonObject patch(const QString &id, const QByteArray &bin);
    int credits() { return send(u"xdf/login.aspx"_s, account()).json().value("credits"_L1).toInt(-1); }

    QString m_token;
};

void TestDevStore::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
    const QJsonObject json = send(u"xdf/login.aspx"_s, account()).json();
    QCOMPARE(json.value("status"_L1).toString(), u"ok"_s);
    QCOMPARE(json.value("credits"_L1), QJsonValue(40));
    m_token = json.value("session_token"_L1).toString();
    QVERIFY(!m_token.isEmpty());
}

QJsonObject TestDevStore::ask(const QString &endpoint, const QString &key, const QString &value)
{
    return send(endpoint, {{u"session_token"_s, m_token}, {key, value}}).json();
}

Outcome TestDevStore::download(const QByteArray &id, const QString &token)
{
    const QByteArray session = (token.isEmpty() ? m_token : token).toLatin1();
    return postForm(url(u"xdf/download.aspx"_s), {{"id", id}, {"session_token", session}}, {});
}

QJsonObject TestDevStore::patch(const QString &id, const QByteArray &bin)
{
    return send(u"patches/patch_process.aspx"_s,
                {{u"session_token"_s, m_token},
                 {u"patch_id"_s, id},
                 {u"file_data"_s, base64(bin)},
                 {u"cal_id"_s, knownOs}})
        .json();
}

void TestDevStore::everyLoginIsASessionOfTheSameAccount()
{
    const QString other = send(u"xdf/login.aspx"_s, account()).json().value("session_token"_L1).toString();
    QVERIFY(other != m_token);
    QCOMPARE(download("12650014-1", other).status, 200);
    QCOMPARE(download("12650014-1").status, 200);
    QCOMPARE(credits(), 30);
}

void TestDevStore::everySampleFileHasItsOffers()
{
    const QStringList numbers = {u"12650007"_s, u"12650014"_s, u"12650021"_s, u"12650028"_s, u"12650035"_s};
    QCOMPARE(SampleData::mainOsNumbers(), numbers);
    for (const QString &os : numbers) {
        const QJsonObject catalog = ask(u"xdf/catalog.aspx"_s, u"os_id"_s, os);
        QCOMPARE(catalog.value("status"_L1).toString(), u"ok"_s);
        QCOMPARE(catalog.value("items"_L1).toArray().size(), 4);
        QCOMPARE(catalog.value("items"_L1)[1].toObject(),
                 QJsonObject({{u"id"_s, os + "-2"_L1},
                              {u"title"_s, "Fuel and spark "_L1 + os},
                              {u"os_id"_s, os},
                              {u"credits"_s, 10}}));
        const QJsonObject patches = ask(u"patches/patches.aspx"_s, u"cal_id"_s, os);
        QCOMPARE(patches.value("status"_L1).toString(), u"ok"_s);
        QCOMPARE(patches.value("credits"_L1).toInt(), 40);
        QCOMPARE(patches.value("patches"_L1).toArray().size(), 5);
        QCOMPARE(patches.value("patches"_L1)[1].toObject(),
                 QJsonObject({{u"id"_s, 302},
                              {u"variant"_s, u"Idle speed"_s},
                              {u"description"_s, u"Writes 4 bytes at offset 0x0240"_s},
                              {u"credits_cost"_s, 10}}));
        QCOMPARE(ask(u"stock/list.aspx"_s, u"os"_s, os).value("files"_L1).toArray().size(), 1);
    }
}

void TestDevStore::offersOfAnUnknownOsAreNone()
{
    for (const QString &os : {u"99999999"_s, QString()}) {
        QCOMPARE(ask(u"xdf/catalog.aspx"_s, u"os_id"_s, os).value("items"_L1), QJsonValue(QJsonArray()));
        QCOMPARE(ask(u"patches/patches.aspx"_s, u"cal_id"_s, os).value("patches"_L1),
                 QJsonValue(QJsonArray()));
    }
}

void TestDevStore::downloadTakesCredits()
{
    const Outcome outcome = download("12650014-2");
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

void TestDevStore::downloadWithoutCreditsTakesNone()
{
    for (int left = 30; left >= 0; left -= 10) {
        QCOMPARE(download("12650014-2").status, 200);
        QCOMPARE(credits(), left);
    }
    QCOMPARE(download("12650014-1").status, 402);
    QCOMPARE(credits(), 0);
    QCOMPARE(download("12650014-3").status, 200);
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

void TestDevStore::jsonRefusals_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    const QString login = u"xdf/login.aspx"_s;
    const QString catalog = u"xdf/catalog.aspx"_s;
    const QString patches = u"patches/patches.aspx"_s;
    const QString process = u"patches/patch_process.aspx"_s;
    // "TOKEN" becomes the token of the session.
    const auto row = [](const char *name, const QString &path, const QList<const char *> &members, int status,
                        const char *error) {
        QJsonObject body;
        for (const char *member : members) {
            const QString text = QString::fromLatin1(member);
            body.insert(text.section(u'=', 0, 0), text.section(u'=', 1));
        }
        QTest::newRow(name) << path << body << status << QString::fromLatin1(error);
    };
    row("login-no-email", login, {"password=demo"}, 200, "No email");
    row("login-no-password", login, {"email=x"}, 200, "No password");
    row("wrong-password", login, {"email=demo@vox.invalid", "password=Demo"}, 200,
        "Wrong e-mail or password");
    row("wrong-email", login, {"email=demo", "password=demo"}, 200, "Wrong e-mail or password");
    row("catalog-no-token", catalog, {"os_id=1"}, 400, "No session_token");
    row("catalog-no-os", catalog, {"session_token=TOKEN"}, 400, "No os_id");
    row("catalog-signed-out", catalog, {"session_token=x", "os_id=1"}, 403, "Not signed in");
    row("patches-no-os", patches, {"session_token=TOKEN"}, 400, "No cal_id");
    row("patches-signed-out", patches, {"session_token=x", "cal_id=1"}, 403, "Not signed in");
    row("patch-no-file", process, {"session_token=TOKEN", "patch_id=301", "cal_id=12650014"}, 200,
        "No file_data");
    const auto patchRow = [&](const char *name, const char *token, const char *id, const QByteArray &data,
                              const char *os, const char *error) {
        const QByteArray file = "file_data=" + data;
        row(name, process, {token, id, file.constData(), os}, 200, error);
    };
    patchRow("patch-signed-out", "session_token=x", "patch_id=301", "eA==", "cal_id=12650014",
             "Not signed in");
    patchRow("patch-no-base64", "session_token=TOKEN", "patch_id=301", "#*!", "cal_id=12650014",
             "file_data holds no Base64");
    patchRow("patch-empty-file", "session_token=TOKEN", "patch_id=301", "", "cal_id=12650014",
             "file_data holds no Base64");
    patchRow("patch-unknown-os", "session_token=TOKEN", "patch_id=301", "eA==", "cal_id=99999999",
             "No patch 301 for 99999999");
    patchRow("patch-unknown", "session_token=TOKEN", "patch_id=300", "eA==", "cal_id=12650014",
             "No patch 300 for 12650014");
    patchRow("patch-of-a-short-file", "session_token=TOKEN", "patch_id=301",
             QByteArray(0x101, 'x').toBase64(), "cal_id=12650014", "The BIN is too short for this patch");
    patchRow("patch-too-dear", "session_token=TOKEN", "patch_id=305", QByteArray(flashSize, 'x').toBase64(),
             "cal_id=12650014", "Not enough credits");
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
    QCOMPARE(outcome.json(),
             QJsonObject({{u"status"_s, u"error"_s}, {u"message"_s, error}, {u"error"_s, error}}));
    QCOMPARE(credits(), 40);
}

void TestDevStore::downloadRefusals_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    const std::pair<QByteArray, QByteArray> token = {"session_token", "TOKEN"};
    QTest::newRow("no-token") << Fields{{"id", "12650014-1"}} << 400 << u"No session_token"_s;
    QTest::newRow("no-id") << Fields{token} << 400 << u"No id"_s;
    QTest::newRow("signed-out") << Fields{{"session_token", "demo-session-9"}, {"id", "12650014-1"}} << 403
                                << u"Not signed in"_s;
    QTest::newRow("unknown-item") << Fields{token, {"id", "12650014-9"}} << 404
                                  << u"No such item: 12650014-9"_s;
    QTest::newRow("not-enough-credits")
        << Fields{token, {"id", "12650014-4"}} << 402 << u"Not enough credits"_s;
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
    const Outcome outcome = postForm(url(u"xdf/download.aspx"_s), fields, {});
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.refusal(), error);
    QCOMPARE(credits(), 40);
}

KVTEDITOR_TEST_MAIN(TestDevStore)
#include "tst_DevStore.moc"
