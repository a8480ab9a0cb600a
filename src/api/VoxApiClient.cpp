#include "api/VoxApiClient.h"

#include "api/Inflater.h"
#include "api/JsonReading.h"
#include "api/ServiceConfig.h"
#include "api/UploadBody.h"

#include <QCoreApplication>
#include <QHttpMultiPart>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <optional>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype shownBodyBytes = 300;
// What unpacks to more than this many times its size counts as a decompression bomb, unless it is no larger
// than a module's memory: erased flash packs that well.
constexpr qint64 mostUnpacked = 40;
constexpr qint64 largestImage = 64 * 1024 * 1024;
// How much may arrive ahead of what is read.
constexpr qint64 mostAhead = 2 * 1024 * 1024;

const QString sessionTokenKey = u"session_token"_s;
const QString calIdKey = u"cal_id"_s;
const QString ticketIdKey = u"ticket_id"_s;
const QString ticketPath = u"feedback_reply.aspx"_s;

QNetworkRequest requestTo(const QString &address)
{
    QNetworkRequest request{QUrl(address)};
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Qt would send its own list, and unpack the answer, if this header were not set.
    request.setRawHeader("Accept-Encoding", "gzip");
    return request;
}

QNetworkRequest uncachedRequestTo(const QString &address)
{
    QNetworkRequest request = requestTo(address);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    return request;
}

// Posts a sequential body, which Qt cannot resend (see UploadBody). Its length must be set in advance. The
// manager owns the reply, the reply owns the body.
QNetworkReply *postOnce(QNetworkAccessManager *manager, QNetworkRequest request,
                        const QList<QByteArray> &pieces)
{
    auto *const body = new UploadBody(pieces);
    request.setHeader(QNetworkRequest::ContentLengthHeader, body->size());
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    QNetworkReply *const reply = manager->post(request, body);
    body->setParent(reply);
    return reply;
}

// A header cannot carry line breaks, and with other control characters in one, some servers drop the whole
// form. Everything else is sent as it is.
QString headerText(QString text)
{
    for (QChar &c : text) {
        if (c < ' '_L1 || c == QChar(0x7F))
            c = '_'_L1;
    }
    return text;
}

// A form as pieces to send. Qt's own form cannot be used: with sequential parts it reads past its end and
// crashes (6.4 and 6.8, not 6.11), and it does not report its length, which must be sent first. All versions
// use the same code. Only the boundary comes from Qt's form: it is unlikely to occur in a file.
class Form
{
public:
    void addField(const QString &name, const QByteArray &value)
    {
        addPart(u"form-data; name=\"%1\""_s.arg(headerText(name)), {}, value);
    }

    void addFile(const WorkerFile &file)
    {
        addPart(u"form-data; name=\"%1\"; filename=\"%2\""_s.arg(headerText(file.fieldName),
                                                                 headerText(file.fileName)),
                "Content-Type: application/octet-stream\r\n"_ba, file.data);
    }

    QByteArray contentType() const { return "multipart/form-data; boundary=\"" + m_boundary + '"'; }
    QList<QByteArray> pieces() const { return m_pieces + QList<QByteArray>{"--" + m_boundary + "--\r\n"}; }

private:
    void addPart(const QString &disposition, const QByteArray &typeLine, const QByteArray &body)
    {
        m_pieces.append("--" + m_boundary + "\r\nContent-Disposition: " + disposition.toUtf8() + "\r\n"
                        + typeLine + "\r\n");
        m_pieces.append(body);
        m_pieces.append("\r\n"_ba);
    }

    QByteArray m_boundary = QHttpMultiPart(QHttpMultiPart::FormDataType).boundary();
    QList<QByteArray> m_pieces;
};

int httpStatus(const QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// A body without a length ends when the server closes the connection. More often than not, Qt then reports
// that it could not resend the request (6.4, 6.8 and 6.11), although the whole answer is there.
bool endedByClosing(const QNetworkReply *reply)
{
    return reply->error() == QNetworkReply::ContentReSendError && httpStatus(reply) / 100 == 2
        && !reply->hasRawHeader("Content-Length") && !reply->hasRawHeader("Transfer-Encoding");
}

// For a request that it could not resend, and sometimes for a connection that closes during an upload, Qt
// says only "Unknown error". Up to 6.8 it treats every answer that ends with the connection as the former;
// 6.11 does so only over TLS. Use Qt's own text for what really happened.
QString brokenOffText(const QNetworkReply *reply)
{
    if (httpStatus(reply) < 300)
        return QCoreApplication::translate("QHttp", "Connection closed");
    return QCoreApplication::translate("QNetworkReply", "Error transferring %1 - server replied: %2")
        .arg(reply->url().toString(),
             reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString());
}

// Whether the connection ended before the announced length arrived; of a GET, Qt may then report no error.
bool isCutShort(const QNetworkReply *reply, qint64 size)
{
    return httpStatus(reply) == 200
        && reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > size;
}

QString decompressionFailure(const QString &reason)
{
    return QCoreApplication::translate("QHttp", "Decompression failed: %1").arg(reason);
}

// The body of an answer. Read as it arrives; reading it in one piece at the end would hold it in memory three
// times.
class Body
{
public:
    /// More than `most` bytes are not kept.
    explicit Body(qint64 most)
        : m_most(most)
    {
    }

    /// Why reading was given up; empty if it was not.
    QString fault() const { return m_fault; }
    /// Whether it is packed and its end is missing.
    bool isUnfinished() const { return m_inflater && m_inflater->state() == Inflater::State::Unfinished; }
    const QByteArray &bytes() const { return m_bytes; }
    /// How many bytes arrived, packed or not.
    qint64 received() const { return m_received; }

    void take(QNetworkReply *reply)
    {
        // An announced length may lie, so what arrives is counted as well.
        if (reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > m_most)
            giveUp(tooLong());
        const QByteArray encoding = reply->rawHeader("Content-Encoding").trimmed().toLower();
        const bool isPacked = encoding == "gzip" || encoding == "deflate";
        for (qint64 more = reply->bytesAvailable(); more > 0 && m_fault.isEmpty();
             more = reply->bytesAvailable()) {
            const qint64 had = m_received;
            if (isPacked)
                unpack(reply->read(more));
            else
                append(reply, more);
            if (m_received == had)
                return;
        }
    }

private:
    static QString tooLong()
    {
        return QString::fromStdString(std::make_error_code(std::errc::file_too_large).message());
    }

    void append(QNetworkReply *reply, qint64 more)
    {
        const qsizetype had = m_bytes.size();
        if (more > m_most - had) {
            giveUp(tooLong());
            return;
        }
        m_bytes.resize(had + more);
        const qint64 count = std::max<qint64>(reply->read(m_bytes.data() + had, more), 0);
        m_bytes.resize(had + count);
        m_received += count;
    }

    void unpack(const QByteArray &packed)
    {
        if (!m_inflater)
            m_inflater.emplace();
        m_received += packed.size();
        const qint64 most = std::min(m_most, std::max(largestImage, m_received * mostUnpacked));
        m_inflater->add(packed, m_bytes, most);
        if (m_bytes.size() > most)
            giveUp(tooLong());
        else if (m_inflater->state() == Inflater::State::Broken)
            giveUp(decompressionFailure(m_inflater->fault()));
    }

    void giveUp(const QString &fault)
    {
        m_fault = fault;
        m_bytes = {};
    }

    qint64 m_most;
    qint64 m_received = 0;
    QByteArray m_bytes;
    QString m_fault;
    std::optional<Inflater> m_inflater;
};

QString errorText(const QNetworkReply *reply, const Body &body)
{
    // Qt hands over an interim answer other than 100 as the final one, and drops what comes after it.
    const int status = httpStatus(reply);
    if (status / 100 == 1)
        return u"HTTP %1: the outcome is unknown."_s.arg(status);
    if (!body.fault().isEmpty())
        return status < 300 ? body.fault() : brokenOffText(reply);
    if (reply->error() == QNetworkReply::NoError || endedByClosing(reply)) {
        if (isCutShort(reply, body.received()))
            return brokenOffText(reply);
        return body.isUnfinished() ? decompressionFailure(u"unexpected end of file"_s) : QString();
    }
    const QString text = reply->errorString();
    return text == QCoreApplication::translate("QIODevice", "Unknown error") ? brokenOffText(reply) : text;
}

// The deployment's fields, overridden by the request's own.
QVariantMap withAuthFields(const QVariantMap &own)
{
    QVariantMap all = serviceConfig().authFields;
    all.insert(own);
    return all;
}

} // namespace

WorkerResult classifyWorkerAnswer(const QByteArray &body, const QJsonObject &object, const QString &error)
{
    WorkerResult result;
    if (!error.isEmpty() && body.isEmpty()) {
        result.error = error;
        return result;
    }
    result.isJson = body.startsWith('{') || !object.isEmpty();
    if (!result.isJson) {
        // Whole files are known to arrive together with a transport error; the bytes count.
        result.data = body;
        result.ok = !body.isEmpty();
        if (!result.ok)
            result.error = u"Worker returned empty response."_s;
        return result;
    }
    result.text = QString::fromUtf8(body);
    result.object = object;
    const QString status = jsonString(object, u"status"_s);
    result.ok = status == "ok"_L1;
    if (result.ok)
        return result;
    result.error = jsonString(object, u"message"_s);
    if (result.error.isEmpty())
        result.error = jsonString(object, u"error"_s);
    if (result.error.isEmpty())
        result.error = u"Worker error: %1"_s.arg(status);
    return result;
}

VoxApiClient::VoxApiClient(QObject *parent)
    : QObject(parent)
    , m_apiBase(serviceConfig().apiBase)
    , m_refusal(serviceConfig().refusal)
{
}

VoxApiClient::~VoxApiClient() = default;

void VoxApiClient::setApiBase(const QString &base)
{
    m_apiBase = base.endsWith('/'_L1) ? base : base + '/'_L1;
}

QString VoxApiClient::url(const QString &path) const
{
    return m_apiBase + (path.startsWith('/'_L1) ? path.sliced(1) : path);
}

void VoxApiClient::postJson(const QString &path, const QJsonObject &object, JsonCallback callback)
{
    postJsonText(path, {QJsonDocument(object).toJson(QJsonDocument::Compact)}, std::move(callback));
}

void VoxApiClient::postJsonText(const QString &path, const QList<QByteArray> &pieces, JsonCallback callback)
{
    if (refused([callback](const QString &reason) { callback({}, reason); }))
        return;
    QNetworkRequest request = requestTo(url(path));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json; charset=utf-8"_s);
    auto *const manager = newManager();
    handOver(postOnce(manager, request, pieces), manager,
             [callback = std::move(callback)](QNetworkReply *finished, const QByteArray &answer,
                                              const QString &error) {
                 const std::optional<QJsonObject> parsed = jsonObjectFromBody(answer);
                 if (parsed || !error.isEmpty()) {
                     callback(parsed.value_or(QJsonObject()), error);
                     return;
                 }
                 callback({},
                          u"HTTP %1: %2"_s.arg(
                              QString::number(httpStatus(finished)),
                              QString::fromUtf8(answer.first(std::min(answer.size(), shownBodyBytes)))));
             });
}

void VoxApiClient::getJson(const QString &path, JsonCallback callback)
{
    if (refused([callback](const QString &reason) { callback({}, reason); }))
        return;
    auto *const manager = newManager();
    handOver(
        manager->get(uncachedRequestTo(url(path))), manager,
        [callback = std::move(callback)](QNetworkReply *, const QByteArray &answer, const QString &error) {
            callback(jsonObjectFromBody(answer).value_or(QJsonObject()), error);
        });
}

void VoxApiClient::postMultipart(const QString &path, const QVariantMap &fields,
                                 const QList<WorkerFile> &files, BytesCallback callback)
{
    if (refused([callback](const QString &reason) { callback({}, {}, reason); }))
        return;
    Form form;
    for (auto it = fields.begin(); it != fields.end(); ++it)
        form.addField(it.key(), it.value().toString().toUtf8());
    for (const WorkerFile &file : files)
        form.addFile(file);

    QNetworkRequest request = requestTo(url(path));
    request.setHeader(QNetworkRequest::ContentTypeHeader, form.contentType());
    auto *const manager = newManager();
    handOver(
        postOnce(manager, request, form.pieces()), manager,
        [callback = std::move(callback)](QNetworkReply *, const QByteArray &answer, const QString &error) {
            callback(answer, jsonObjectFromBody(answer).value_or(QJsonObject()), error);
        });
}

void VoxApiClient::downloadFile(const QString &url, BytesCallback callback)
{
    if (refused([callback](const QString &reason) { callback({}, {}, reason); }))
        return;
    QNetworkRequest request = uncachedRequestTo(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    auto *const manager = newManager();
    handOver(manager->get(request), manager,
             [callback = std::move(callback)](QNetworkReply *, const QByteArray &answer,
                                              const QString &error) { callback(answer, {}, error); });
}

void VoxApiClient::kvtWorker(const QString &version, const QString &operation, const FieldList &fields,
                             const QList<WorkerFile> &files, WorkerCallback callback)
{
    if (files.isEmpty() || files.constFirst().data.isEmpty()) {
        WorkerResult refused;
        refused.error = u"No input file for worker request."_s;
        callback(refused);
        return;
    }
    QVariantMap form{{u"version"_s, version}, {u"operation"_s, operation}};
    for (const auto &[name, value] : fields)
        form.insert(name, value);
    postMultipart(u"kvt_worker/process.aspx"_s, withAuthFields(form), files,
                  [callback = std::move(callback)](const QByteArray &body, const QJsonObject &object,
                                                   const QString &error) {
                      const WorkerResult result = classifyWorkerAnswer(body, object, error);
                      // The file may be a proxy's page that says why there is none.
                      if (!error.isEmpty() && !result.data.isEmpty())
                          qWarning("An answer of %lld bytes came with an error: %s",
                                   static_cast<long long>(result.data.size()), qUtf8Printable(error));
                      callback(result);
                  });
}

void VoxApiClient::uploadToDev(const QJsonObject &object, BytesCallback callback)
{
    postJson(u"upload.aspx"_s, object,
             [callback = std::move(callback)](const QJsonObject &answer, const QString &error) {
                 callback({}, answer, error);
             });
}

void VoxApiClient::xdfLogin(const QString &email, const QString &password, JsonCallback callback)
{
    postJson(u"xdf/login.aspx"_s, {{u"email"_s, email}, {u"password"_s, password}}, std::move(callback));
}

void VoxApiClient::xdfCatalog(const QString &sessionToken, const QString &osId, JsonCallback callback)
{
    postJson(u"xdf/catalog.aspx"_s, {{sessionTokenKey, sessionToken}, {u"os_id"_s, osId}},
             std::move(callback));
}

void VoxApiClient::xdfDownload(const QString &sessionToken, const QString &id, BytesCallback callback)
{
    postMultipart(u"xdf/download.aspx"_s, {{sessionTokenKey, sessionToken}, {u"id"_s, id}}, {},
                  std::move(callback));
}

void VoxApiClient::patches(const QString &sessionToken, const QString &calId, JsonCallback callback)
{
    postJson(u"patches/patches.aspx"_s, {{sessionTokenKey, sessionToken}, {calIdKey, calId}},
             std::move(callback));
}

void VoxApiClient::applyPatch(const QString &sessionToken, int patchId, const QByteArray &binBytes,
                              const QString &calId, JsonCallback callback)
{
    const QByteArray text = QJsonDocument({{sessionTokenKey, sessionToken},
                                           {u"patch_id"_s, QString::number(patchId)},
                                           {u"file_data"_s, QString()},
                                           {calIdKey, calId}})
                                .toJson(QJsonDocument::Compact);
    // Inserted here because a large file as a QJsonValue takes ten times its size in memory, and seconds. The
    // search cannot hit a value: quotes in values are escaped.
    const QByteArray member = "\"file_data\":\""_ba;
    const qsizetype value = text.indexOf(member) + member.size();
    postJsonText(u"patches/patch_process.aspx"_s,
                 {text.first(value), binBytes.toBase64(), text.sliced(value)}, std::move(callback));
}

void VoxApiClient::stockList(const QVariantMap &filters, JsonCallback callback)
{
    postJson(u"stock/list.aspx"_s, QJsonObject::fromVariantMap(filters), std::move(callback));
}

void VoxApiClient::stockDownload(const QString &id, BytesCallback callback)
{
    postMultipart(u"stock/download.aspx"_s, {{u"id"_s, id}}, {}, std::move(callback));
}

void VoxApiClient::feedbackSubmit(const QJsonObject &ticket, JsonCallback callback)
{
    postJson(u"feedback.aspx"_s, ticket, std::move(callback));
}

void VoxApiClient::feedbackToDev(const QJsonObject &ticket, JsonCallback callback)
{
    feedbackSubmit(QJsonObject::fromVariantMap(withAuthFields(ticket.toVariantMap())), std::move(callback));
}

void VoxApiClient::feedbackHistory(const QString &ticketId, JsonCallback callback)
{
    postJson(ticketPath, {{u"action"_s, u"history"_s}, {ticketIdKey, ticketId}}, std::move(callback));
}

void VoxApiClient::feedbackReply(const QString &ticketId, const QString &message, JsonCallback callback)
{
    postJson(ticketPath, {{u"action"_s, u"reply"_s}, {ticketIdKey, ticketId}, {u"message"_s, message}},
             std::move(callback));
}

void VoxApiClient::checkUpdate(JsonCallback callback)
{
    getJson(u"updates/kvteditornew/update.json"_s, std::move(callback));
}

bool VoxApiClient::refused(const std::function<void(const QString &)> &end)
{
    if (m_refusal.isEmpty())
        return false;
    const auto endCall = [end, reason = m_refusal] { end(reason); };
    QMetaObject::invokeMethod(this, endCall, Qt::QueuedConnection);
    return true;
}

QNetworkAccessManager *VoxApiClient::newManager()
{
    return new QNetworkAccessManager(this);
}

// The manager belongs to the client and the reply to the manager; both go once the answer was handed over.
// Queued, because a callback may destroy the client, and Qt still uses the reply after it has emitted
// finished().
void VoxApiClient::handOver(QNetworkReply *reply, QNetworkAccessManager *manager, Finished finished)
{
    const auto body = std::make_shared<Body>(m_largestAnswer);
    const auto take = [reply, body] {
        const bool wasFine = body->fault().isEmpty();
        body->take(reply);
        // Queued: abort() emits finished(), but Qt still reports progress after readyRead() returns.
        if (wasFine && !body->fault().isEmpty())
            QMetaObject::invokeMethod(reply, &QNetworkReply::abort, Qt::QueuedConnection);
    };
    // Qt forgets the size if it is set before a POST is under way.
    connect(reply, &QNetworkReply::metaDataChanged, this, [reply, take] {
        reply->setReadBufferSize(mostAhead);
        take();
    });
    connect(reply, &QNetworkReply::readyRead, this, take);
    connect(
        reply, &QNetworkReply::finished, this,
        [reply, manager, body, finished = std::move(finished)] {
            const QPointer<QNetworkAccessManager> kept(manager);
            body->take(reply);
            finished(reply, body->isUnfinished() ? QByteArray() : body->bytes(), errorText(reply, *body));
            if (!kept)
                return;
            reply->deleteLater();
            manager->deleteLater();
        },
        Qt::QueuedConnection);
    emit requestSent(reply);
}
