#include "Exchange.h"

#include "DevService.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QSslConfiguration>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

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
    QSignalSpy finished(reply, &QNetworkReply::finished);
    if (!reply->isFinished() && !finished.wait(waitMs))
        qFatal("No end of a request");
    outcome.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    outcome.contentType = reply->rawHeader("Content-Type");
    outcome.body = reply->readAll();
    outcome.error = reply->error();
    return outcome;
}

const QByteArray boundary = "boundary-of-the-test";

QByteArray fieldParts(const Fields &fields)
{
    QByteArray parts;
    for (const auto &[name, value] : fields)
        parts += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value
            + "\r\n";
    return parts;
}

QByteArray filePart(const QByteArray &name, const QByteArray &fileName, const QByteArray &bytes)
{
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"; filename=\""
        + fileName + "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes + "\r\n";
}

Outcome postBody(const QString &url, const QByteArray &parts)
{
    return post(url, parts + "--" + boundary + "--\r\n", "multipart/form-data; boundary=\"" + boundary + '"');
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

Outcome postForm(const QString &url, const Fields &fields, const QByteArray &file, const QByteArray &fileName)
{
    return postBody(url,
                    fieldParts(fields) + (file.isNull() ? QByteArray() : filePart("file", fileName, file)));
}

Outcome postParts(const QString &url, const Fields &fields, const QList<FilePart> &files)
{
    QByteArray parts = fieldParts(fields);
    for (const FilePart &file : files)
        parts += filePart(file.name, file.name + ".bin", file.bytes);
    return postBody(url, parts);
}

QByteArray ticketOf(const QByteArray &type)
{
    return "{\"type\":\"" + type
        + R"(","name":"A","email":"a@b.invalid","description":"x","version":"4.0.2","os":"Windows"})";
}

RawOutcome rawExchange(const DevService &service, const QByteArray &request)
{
    // A socket of the system: only it tells a reset from an end.
    RawOutcome outcome;
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(service.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        outcome.refused = errno == ECONNREFUSED;
    } else {
        ::send(fd, request.constData(), static_cast<size_t>(request.size()), MSG_NOSIGNAL);
        char piece[65536];
        ssize_t count = 0;
        while ((count = ::recv(fd, piece, sizeof piece, 0)) > 0)
            outcome.bytes.append(piece, count);
        outcome.reset = count < 0 && errno == ECONNRESET;
    }
    ::close(fd);
    return outcome;
}

RawOutcome rawPost(const DevService &service, const QByteArray &path, const QByteArray &body)
{
    return rawExchange(service,
                       "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: "
                           + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

RawOutcome rawGet(const DevService &service, const QByteArray &path)
{
    return rawExchange(service, "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
}
