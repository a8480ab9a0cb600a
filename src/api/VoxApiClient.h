#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <limits>
#include <utility>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

/// One file part of a multipart request.
struct WorkerFile
{
    QString fieldName;
    QString fileName;
    QByteArray data;
};

/// The decoded answer of a worker request: either a produced file (`data`) or a JSON text (`text`).
struct WorkerResult
{
    bool ok = false;
    bool isJson = false;
    QString error;
    QString text;
    QByteArray data;
    /// `text`, parsed; empty for a file.
    QJsonObject object;
};

/// In all three, an empty error text means success, and the object is empty unless the body was a JSON
/// object.
using JsonCallback = std::function<void(const QJsonObject &, const QString &)>;
using BytesCallback = std::function<void(const QByteArray &, const QJsonObject &, const QString &)>;
using WorkerCallback = std::function<void(const WorkerResult &)>;

using FieldList = QList<std::pair<QString, QString>>;

/// What a worker's answer means: a file, a JSON answer that says "ok", or an error to show. Pure.
WorkerResult classifyWorkerAnswer(const QByteArray &body, const QJsonObject &object, const QString &error);

/// The only door to the remote service. Requests are independent, have no time-out, and call back exactly
/// once, on the main thread; if the client is destroyed first they never do. A POST is sent once and never
/// again; a GET may be repeated by Qt when the peer closes without a byte. Request bodies, tokens
/// and passwords are never logged.
class VoxApiClient : public QObject
{
    Q_OBJECT

public:
    explicit VoxApiClient(QObject *parent = nullptr);
    ~VoxApiClient() override;

    /// A missing "/" at the end is added; nothing else is changed or checked.
    void setApiBase(const QString &base);
    /// From now on every request ends at once with `reason`, and none is sent.
    void refuseAll(const QString &reason) { m_refusal = reason; }
    /// Why there is no service; empty where there is one.
    const QString &refusal() const { return m_refusal; }
    /// An answer that is longer, in bytes, ends with an error and is dropped. 2 GiB unless set.
    void setLargestAnswer(qint64 size) { m_largestAnswer = size; }
    /// The absolute URL of a path below the API base; one leading "/" of `path` is dropped.
    QString url(const QString &path) const;

    // The primitives that every endpoint uses

    /// POSTs the object as compact JSON. An answer that is no JSON object gives "HTTP <status>: <start of
    /// body>".
    void postJson(const QString &path, const QJsonObject &object, JsonCallback callback);
    /// GETs, past every cache. An answer that is no JSON object gives an empty object and no error.
    void getJson(const QString &path, JsonCallback callback);
    /// POSTs a form: the fields in ascending key order, then the files in list order.
    void postMultipart(const QString &path, const QVariantMap &fields, const QList<WorkerFile> &files,
                       BytesCallback callback);
    /// GETs an absolute URL, past every cache, following redirects unless they leave HTTPS.
    void downloadFile(const QString &url, BytesCallback callback);

    // Endpoints

    /// Runs one operation on the service's worker; the first of `files` is its input.
    void kvtWorker(const QString &version, const QString &operation, const FieldList &fields,
                   const QList<WorkerFile> &files, WorkerCallback callback);
    void uploadToDev(const QJsonObject &object, BytesCallback callback);
    void xdfLogin(const QString &email, const QString &password, JsonCallback callback);
    void xdfCatalog(const QString &sessionToken, const QString &osId, JsonCallback callback);
    void xdfDownload(const QString &sessionToken, const QString &id, BytesCallback callback);
    void patches(const QString &sessionToken, const QString &calId, JsonCallback callback);
    void applyPatch(const QString &sessionToken, int patchId, const QByteArray &binBytes,
                    const QString &calId, JsonCallback callback);
    /// One member per filter, of the JSON type that its value has.
    void stockList(const QVariantMap &filters, JsonCallback callback);
    void stockDownload(const QString &id, BytesCallback callback);
    void feedbackSubmit(const QJsonObject &ticket, JsonCallback callback);
    /// As feedbackSubmit, with the deployment's authentication fields, which a worker request carries too.
    void feedbackToDev(const QJsonObject &ticket, JsonCallback callback);
    void feedbackHistory(const QString &ticketId, JsonCallback callback);
    void feedbackReply(const QString &ticketId, const QString &message, JsonCallback callback);
    void checkUpdate(JsonCallback callback);

signals:
    /// A request went out; `reply` lives until the answer was handed over.
    void requestSent(QNetworkReply *reply);

private:
    using Finished = std::function<void(QNetworkReply *, const QByteArray &, const QString &)>;
    /// POSTs pieces that make up one JSON text.
    void postJsonText(const QString &path, const QList<QByteArray> &pieces, JsonCallback callback);
    void handOver(QNetworkReply *reply, QNetworkAccessManager *manager, Finished finished);
    QNetworkAccessManager *newManager();
    /// Whether nothing is sent; `end` then gets the reason from the event loop.
    bool refused(const std::function<void(const QString &)> &end);

    QString m_apiBase;
    QString m_refusal;
    qint64 m_largestAnswer = std::numeric_limits<int>::max();
};
