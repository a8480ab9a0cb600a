#include "ServiceTest.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QTcpSocket>

#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int waitMs = 60'000;

QNetworkRequest requestFor(const QString &url, const QString &authority)
{
    QNetworkRequest request{QUrl(url)};
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    if (!authority.isEmpty()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setCaCertificates(QSslCertificate::fromPath(authority));
        request.setSslConfiguration(tls);
    }
    return request;
}

Outcome awaited(QNetworkReply *reply)
{
    const std::unique_ptr<QNetworkReply> owner(reply);
    Outcome outcome;
    QObject::connect(reply, &QNetworkReply::sslErrors, reply, [&outcome](const QList<QSslError> &errors) {
        for (const QSslError &error : errors)
            outcome.tlsErrors.append(error.error());
    });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&outcome] { ++outcome.pieces; });
    QSignalSpy finished(reply, &QNetworkReply::finished);
    if (!reply->isFinished() && !finished.wait(waitMs))
        qFatal("No end of a request to %s", qPrintable(reply->url().toString()));
    outcome.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    outcome.contentType = reply->rawHeader("Content-Type");
    outcome.body = reply->readAll();
    outcome.error = reply->error();
    return outcome;
}

} // namespace

QJsonObject Outcome::json() const
{
    return QJsonDocument::fromJson(body).object();
}

Outcome get(const QString &url, const QString &authority)
{
    QNetworkAccessManager manager;
    return awaited(manager.get(requestFor(url, authority)));
}

Outcome post(const QString &url, const QByteArray &body, const QByteArray &type, const QString &authority)
{
    QNetworkAccessManager manager;
    QNetworkRequest request = requestFor(url, authority);
    request.setHeader(QNetworkRequest::ContentTypeHeader, type);
    return awaited(manager.post(request, body));
}

Outcome postForm(const QString &url, const Fields &fields, const QList<FilePart> &files)
{
    const QByteArray start = "--boundary\r\nContent-Disposition: form-data; name=\"";
    QByteArray body;
    for (const auto &[name, value] : fields)
        body += start + name + "\"\r\n\r\n" + value + "\r\n";
    for (const auto &[name, bytes, fileName] : files)
        body += start + name + "\"; filename=\"" + fileName
            + "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes + "\r\n";
    return post(url, body + "--boundary--\r\n", "multipart/form-data; boundary=\"boundary\"");
}

QByteArray rawExchange(const DevService &service, const QByteArray &request, bool isCut)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, service.port());
    socket.write(request);
    if (isCut && socket.waitForBytesWritten(waitMs))
        ::shutdown(int(socket.socketDescriptor()), SHUT_WR);
    if (!socket.waitForDisconnected(waitMs) && socket.state() != QAbstractSocket::UnconnectedState)
        qFatal("No end of a connection");
    return socket.readAll();
}

QByteArray rawGet(const DevService &service, const QByteArray &path)
{
    return rawExchange(service,
                       "GET " + path + " HTTP/1.1\r\nHost: x\r\nAccept-Encoding: gzip, deflate\r\n\r\n");
}

QByteArray ticketOf(const QByteArray &type)
{
    return "{\"type\":\"" + type
        + R"(","name":"A","email":"a@b.invalid","description":"x","version":"4.0.2","os":"Windows"})";
}

Outcome ServiceTest::send(const QString &endpoint, const QJsonObject &body) const
{
    return post(url(endpoint), QJsonDocument(body).toJson(QJsonDocument::Compact));
}

Outcome ServiceTest::askWorker(const QByteArray &operation, const QList<FilePart> &files,
                               const Fields &fields) const
{
    return postForm(url(u"kvt_worker/process.aspx"_s),
                    Fields{{"operation", operation}, {"version", "4.0.2"}} + fields, files);
}

void ServiceTest::init()
{
    m_service = std::make_unique<DevService>();
    QVERIFY(m_service->start());
}

void ServiceTest::cleanup()
{
    m_service.reset();
}
