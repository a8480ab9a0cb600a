#include "StoreFixture.h"

#include "api/ServiceConfig.h"
#include "support/FormData.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QNetworkAccessManager>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto allEntries = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

} // namespace

StoreFixture::StoreFixture()
    : state(std::make_unique<AppState>())
{
    client()->setApiBase(server.baseUrl());
    noteAnnouncements();
}

StoreFixture::~StoreFixture()
{
    state.reset();
    QDir(TestEnvironment::documents()).removeRecursively();
    QFile::remove(TestEnvironment::documents());
    const QFileInfoList opened = QDir(QDir::tempPath()).entryInfoList({u"*.kvt"_s}, allEntries);
    for (const QFileInfo &left : opened) {
        if (left.isDir())
            QDir(left.filePath()).removeRecursively();
        else
            QFile::remove(left.filePath());
    }
}

void StoreFixture::deployWithAuthFields(const QTemporaryDir &dir)
{
    const QString path = dir.filePath(u"deployment.json"_s);
    makeFile(path,
             R"({"authFields":{"app_user":"tester","id":"TOPSECRET","zz_key":"TOPSECRET"},)"
             R"("storeUrl":"file:///etc/passwd"})");
    qputenv("KVTEDITOR_SERVICE_CONFIG", QFile::encodeName(path));
    QCOMPARE(serviceConfig().authFields.size(), 3);
}

void StoreFixture::noteAnnouncements()
{
    const auto note = [this](void (AppState::*change)(), const QString &name) {
        QObject::connect(state.get(), change, state.get(), [this, name] { announced.append(name); });
    };
    note(&AppState::tabChanged, u"tab"_s);
    note(&AppState::busyChanged, u"busy"_s);
    note(&AppState::fileChanged, u"file"_s);
    note(&AppState::identifiersChanged, u"identifiers"_s);
    note(&AppState::showHexChanged, u"showHex"_s);
    note(&AppState::xdfChanged, u"xdf"_s);
    note(&AppState::searchChanged, u"search"_s);
    note(&AppState::segmentsChanged, u"segments"_s);
    note(&AppState::patcherChanged, u"patcher"_s);
    note(&AppState::stockChanged, u"stock"_s);
    note(&AppState::toolsChanged, u"tools"_s);
    note(&AppState::feedbackChanged, u"feedback"_s);
    QObject::connect(state.get(), &AppState::statusChanged, state.get(), [this] {
        announced.append(QString::number(state->statusOK()) + u' ' + state->status());
    });
}

bool StoreFixture::idle() const
{
    return client()->findChildren<QNetworkAccessManager *>().isEmpty();
}

QString StoreFixture::inDocuments(const QString &name)
{
    return TestEnvironment::documents() + u'/' + name;
}

QStringList StoreFixture::documents()
{
    return QDir(TestEnvironment::documents()).entryList(allEntries);
}

QList<QUrl> StoreFixture::documentsShown()
{
    return {QUrl::fromLocalFile(TestEnvironment::documents())};
}

QStringList StoreFixture::filesEverywhere()
{
    const QDir root(TestEnvironment::home() + u"/.."_s);
    QStringList files;
    for (QDirIterator it(root.canonicalPath(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString file = root.relativeFilePath(it.next());
        // The platform's libraries fill it when they like.
        if (!file.startsWith(u"cache/"_s))
            files.append(file);
    }
    files.sort();
    return files;
}

QByteArrayList formLines(const RecordedRequest &request)
{
    QByteArrayList lines;
    for (const FormPart &part : formParts(request)) {
        for (const auto &[name, value] : part.headers)
            lines.append(name + ": " + value);
        lines.append(part.body);
    }
    return lines;
}

void addFailedJsonAnswers()
{
    QTest::addColumn<RawAnswer>("answer");
    QTest::addColumn<QString>("status");

    const auto http = [](const char *name, int status, const QByteArray &body, const QString &text) {
        QTest::newRow(name) << RawAnswer{httpAnswer(status, body)} << text;
    };
    http("200-empty", 200, {}, u"HTTP 200: "_s);
    http("200-html", 200, "<html>R&D</html>", u"HTTP 200: <html>R&D</html>"_s);
    http("200-array", 200, "[{}]", u"HTTP 200: [{}]"_s);
    http("200-scalar", 200, "7", u"HTTP 200: 7"_s);
    http("200-null", 200, "null", u"HTTP 200: null"_s);
    http("200-text-after-the-object", 200, "{}x", u"HTTP 200: {}x"_s);
    http("200-cut-short", 200, R"({"credits":"9","token":"t)",
         u"HTTP 200: {\"credits\":\"9\",\"token\":\"t"_s);
    http("200-1000-bytes", 200, QByteArray(1000, 'x'), u"HTTP 200: "_s + QString(300, u'x'));
    http("200-deeply-nested", 200, QByteArray(100000, '['), u"HTTP 200: "_s + QString(300, u'['));
    http("204", 204, {}, u"HTTP 204: "_s);

    // Whatever the body holds, the transport's word comes first.
    const QByteArray goodForAll = R"({"token":"new","credits":"9","items":[{"id":"new"}],)"
                                  R"("patches":[{"id":9}],"files":[{"id":"new"}],"file_data":"TkVX",)"
                                  R"("status":"ok","error":"No."})";
    http("400-json", 400, goodForAll, qtText);
    http("401-json", 401, goodForAll, qtText);
    http("404-html", 404, "<html></html>", qtText);
    http("500-json", 500, goodForAll, qtText);
    http("503-empty", 503, {}, qtText);
    QTest::newRow("closed-without-a-byte") << RawAnswer{} << qtText;
    QTest::newRow("reset-without-a-byte") << RawAnswer{{}, RawAnswer::Ending::Reset} << qtText;
    QTest::newRow("closed-within-body")
        << RawAnswer{"HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\n" + goodForAll} << qtText;
    QTest::newRow("not-http") << RawAnswer{"220 mail.example ESMTP\r\n"} << qtText;
}

bool isOneFailure(const QStringList &announced, const QString &text)
{
    if (announced.size() != 1)
        return false;
    const QString &status = announced.constFirst();
    if (text != qtText)
        return status == u"0 "_s + text;
    return status.startsWith(u"0 "_s) && status.size() > 2 && !status.startsWith(u"0 HTTP "_s)
        && !status.contains(u"No."_s);
}
