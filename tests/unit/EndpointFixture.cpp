#include "EndpointFixture.h"

#include "support/RawHttpServer.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QVariantMap byMake()
{
    return {{u"make"_s, u"Ford"_s}};
}

constexpr EndpointOperation operations[] = {
    {"kvt_info", "kvt_worker/process.aspx", Decoding::Silent,
     [](AppState &state, const QString &folder) { state.openKvt(folder + u"/other.kvt"_s); },
     R"({"status":"ok","vin":"GOODVIN"})", "Opened other.kvt \u2014 5 bytes.", 1, "", 1},
    {"convertOp", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &) { state.convertOp(u"kvt2bin"_s, {}); }, "BIN", "Saved open.bin", 1,
     R"({"status":"ok"})", 1, "open.bin", "Saved open.bin"},
    {"toolConvert", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &folder) { state.toolConvert(u"vbf"_s, folder + u"/in.vbf"_s); },
     "BIN", "Saved in.bin", 1, R"({"status":"ok"})", 1, "in.bin", "Saved in.bin"},
    {"previewSegments", "kvt_worker/process.aspx", Decoding::Preview,
     [](AppState &state, const QString &) { state.previewSegments(); },
     R"({"status":"ok","candidates":[{},{}]})", "2 swap candidate(s).", 1, "0 swap candidate(s).", 1},
    {"applySegments", "kvt_worker/process.aspx", Decoding::Worker,
     [](AppState &state, const QString &) { state.applySegments(); }, "SWAPPED", "Saved swapped.kvt", 2,
     R"({"status":"ok"})", 1, "swapped.kvt", "Saved swapped.kvt", Destination::DocumentsAndOpened},
    {"sendToDev", "feedback.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.sendToDev(u"a@b.example"_s, u"note"_s); },
     R"({"status":"ok","ticket_id":"T-1"})", "Ticket created: T-1", 1, "Ticket created: ", 1},
    {"xdfLogin", "xdf/login.aspx", Decoding::Json, [](AppState &state, const QString &) { state.xdfLogin(); },
     R"({"session_token":"new","credits":3})", "XDF signed in.", 1, "XDF login failed.", 0},
    {"xdfCatalog", "xdf/catalog.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.xdfCatalog(); }, R"({"items":[{},{}]})",
     "Catalog: 2 item(s).", 1, "Catalog: 0 item(s).", 1},
    {"xdfDownload", "xdf/download.aspx", Decoding::Bytes,
     [](AppState &state, const QString &) { state.xdfDownload(0); }, "<XDF/>", "Downloaded XDF.", 1,
     "Downloaded XDF.", 1, "Tables.xdf", "Downloaded XDF."},
    {"loadPatches", "patches/patches.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.loadPatches(u"CAL"_s); }, R"({"patches":[{},{}]})",
     "2 patch(es) for CAL.", 1, "0 patch(es) for CAL.", 1},
    {"applyPatchToBin", "patches/patch_process.aspx", Decoding::Json,
     [](AppState &state, const QString &folder) { state.applyPatchToBin(0, folder + u"/in.bin"_s); },
     R"({"file_data":"UEFUQ0g="})", "Patch applied.", 1, "Patch processed: ", 1, "in_patched.bin"},
    {"stockSearch", "stock/list.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.stockSearch(byMake()); }, R"({"files":[{},{}]})",
     "2 stock file(s).", 1, "0 stock file(s).", 1},
    {"stockDownload", "stock/download.aspx", Decoding::Bytes,
     [](AppState &state, const QString &) { state.stockDownload(0, false); }, "STOCK", "Downloaded stock.kvt",
     1, "Downloaded stock.kvt", 1, "stock.kvt", "Downloaded stock.kvt"},
    {"stockOpen", "stock/download.aspx", Decoding::Bytes,
     [](AppState &state, const QString &) { state.stockDownload(0, true); }, "STOCK",
     "Opened stock.kvt \u2014 5 bytes.", 2, "Opened stock.kvt \u2014 15 bytes.", 1, "stock.kvt",
     "Opened stock.kvt \u2014 %1 bytes.", Destination::TemporaryAndOpened},
    {"submitTicket", "feedback.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.submitTicket(u"bug"_s, u"A"_s, {}, u"text"_s); },
     R"({"status":"ok","ticket_id":"T-2"})", "Ticket: T-2", 1, "Ticket: ", 1},
    {"loadTicket", "feedback_reply.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.loadTicket(u"T-1"_s); }, R"({"messages":["good"]})",
     "Loaded ticket.", 1, "Loaded ticket.", 1},
    {"replyTicket", "feedback_reply.aspx", Decoding::Json,
     [](AppState &state, const QString &) { state.replyTicket(u"T-1"_s, u"Thanks."_s); },
     R"({"status":"ok"})", "Loaded ticket.", 2, "Loaded ticket.", 1},
    {"checkUpdate", "updates/kvteditornew/update.json", Decoding::Get,
     [](AppState &state, const QString &) { state.checkUpdate(); }, R"({"latest_version":"4.0.2"})",
     "You are running the latest version (4.0.2).", 1, "Update check: the server did not report a version.",
     0},
};

void addFiles(const QString &folder, QMap<QString, QByteArray> &files)
{
    QDirIterator entries(folder, QDir::Files | QDir::Hidden);
    while (entries.hasNext()) {
        const QString path = entries.next();
        // A device may never end, and a pipe never begin.
        if (entries.fileInfo().isFile())
            files.insert(path, contentOf(path));
    }
}

} // namespace

std::span<const EndpointOperation> endpointOperations()
{
    return operations;
}

EndpointFixture::EndpointFixture()
    : m_folder(TestEnvironment::home() + u"/fixture-XXXXXX"_s)
{
    makeFile(m_folder.filePath(u"open.kvt"_s), "the open file's bytes");
    makeFile(m_folder.filePath(u"other.kvt"_s), "OTHER");
    makeFile(m_folder.filePath(u"donor.kvt"_s), "DONOR");
    makeFile(m_folder.filePath(u"in.vbf"_s), "VBF");
    makeFile(m_folder.filePath(u"in.bin"_s), "BIN");
}

EndpointFixture::~EndpointFixture()
{
    m_state.reset();
    for (const QString &folder : {TestEnvironment::documents(), QDir::tempPath()}) {
        const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files);
        for (const QFileInfo &entry : entries)
            QFile::remove(entry.filePath());
    }
}

bool EndpointFixture::fill()
{
    RawHttpServer server;
    setApiBase(server.baseUrl());
    server.answerNext(answerWith(R"({"status":"ok","vin":"OLDVIN","modules":[{"mainOs":"OS1"}]})"));
    m_state->openKvt(m_folder.filePath(u"open.kvt"_s));
    bool settled = settle();
    m_state->pickSegmentFile(u"donor"_s, m_folder.filePath(u"donor.kvt"_s));
    const std::pair<const char *, void (*)(AppState &)> steps[] = {
        {R"({"session_token":"old","credits":15})", [](AppState &state) { state.xdfLogin(); }},
        {R"({"items":[{"id":"1","title":"Tables"}]})", [](AppState &state) { state.xdfCatalog(); }},
        {R"({"patches":[{"id":7,"variant":"v"}]})", [](AppState &state) { state.loadPatches(u"OLD"_s); }},
        {R"({"files":[{"id":"9","filename":"stock.kvt"}]})", [](AppState &state) { state.stockSearch({}); }},
        {R"({"messages":["old"]})", [](AppState &state) { state.loadTicket(u"T-0"_s); }},
        {R"({"status":"ok","candidates":[{"label":"old"}]})",
         [](AppState &state) { state.previewSegments(); }},
    };
    for (const auto &[answer, step] : steps) {
        server.answerNext(answerWith(answer));
        step(*m_state);
        settled = settled && settle();
    }
    m_state->hexModel()->applyPatch(4, "EDIT");
    m_state->hexModel()->setCursor(3);
    m_state->setTab(u"hex"_s);
    m_state->setStatus(u"before"_s, -1);
    return settled && m_state->vin() == u"OLDVIN"_s && m_state->xdfToken() == u"old"_s
        && m_state->xdfItems().size() == 1 && m_state->patchItems().size() == 1
        && m_state->stockRows().size() == 1 && m_state->swapCandidates().size() == 1
        && !m_state->threadText().isEmpty();
}

void EndpointFixture::resizeInputs(int size)
{
    const QByteArray big(size, 'B');
    m_state->hexModel()->setBytes(big);
    for (const QFileInfo &file : QDir(m_folder.path()).entryInfoList(QDir::Files))
        makeFile(file.filePath(), big);
}

// A request's manager goes last of all that belongs to it.
bool EndpointFixture::settle()
{
    while (auto *const manager = m_state->findChild<QNetworkAccessManager *>()) {
        QEventLoop loop;
        QTimer patience;
        patience.setSingleShot(true);
        patience.setInterval(60s);
        QObject::connect(&patience, &QTimer::timeout, &loop, &QEventLoop::quit);
        QObject::connect(manager, &QObject::destroyed, &loop, &QEventLoop::quit);
        // A large file takes longer than that on a busy machine, but not without progress.
        const auto more = [&patience] { patience.start(); };
        for (const QNetworkReply *const reply : manager->findChildren<QNetworkReply *>()) {
            QObject::connect(reply, &QNetworkReply::uploadProgress, &patience, more);
            QObject::connect(reply, &QNetworkReply::downloadProgress, &patience, more);
        }
        patience.start();
        loop.exec();
        if (!patience.isActive())
            return false;
    }
    return true;
}

Snapshot EndpointFixture::snapshot() const
{
    Snapshot snapshot;
    for (const char *const name :
         {"fileName", "vin", "modules", "showHex", "tab", "busy", "xdfToken", "xdfCredits", "xdfItems",
          "catalogText", "swapCandidates", "patchItems", "stockRows", "threadText"})
        snapshot.insert(QLatin1StringView(name), m_state->property(name));
    snapshot.insert(u"bytes"_s, m_state->currentKvtBytes());
    snapshot.insert(u"cursor"_s, m_state->hexModel()->cursor());
    const QMap<QString, QByteArray> files = filesOnDisk();
    for (auto file = files.begin(); file != files.end(); ++file)
        snapshot.insert(file.key(), file.value());
    return snapshot;
}

QMap<QString, QByteArray> filesOnDisk()
{
    QMap<QString, QByteArray> files;
    addFiles(TestEnvironment::documents(), files);
    addFiles(QDir::tempPath(), files);
    return files;
}
