#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QNetworkReply>
#include <QSslError>
#include <QString>

#include <utility>

class DevService;

/// What a client sees of one request.
struct Outcome
{
    int status = 0;
    QByteArray contentType;
    QByteArray body;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QList<QSslError::SslError> tlsErrors;

    QJsonObject json() const;
};

using Fields = QList<std::pair<QByteArray, QByteArray>>;

/// Each sends one request through the network library, which may send it again when the peer closes early,
/// and waits for its end. `authority` is the PEM file of the certificate to trust, or empty.
Outcome get(const QString &url, const QString &authority = {});
Outcome post(const QString &url, const QByteArray &body, const QByteArray &type = "application/json",
             const QString &authority = {});
/// The fields, and the file as the part "file" when it is not null.
Outcome postForm(const QString &url, const Fields &fields, const QByteArray &file,
                 const QByteArray &fileName = "tune.kvt");

struct FilePart
{
    QByteArray name;
    QByteArray bytes;
};
/// The fields, then the files, each under the file name NAME.bin.
Outcome postParts(const QString &url, const Fields &fields, const QList<FilePart> &files);

/// A ticket with all that the service asks for, as the body of a request.
QByteArray ticketOf(const QByteArray &type);

/// All that comes back for bytes that are sent once, and how it ended.
struct RawOutcome
{
    QByteArray bytes;
    bool refused = false;
    bool reset = false;
};
RawOutcome rawExchange(const DevService &service, const QByteArray &request);
RawOutcome rawPost(const DevService &service, const QByteArray &path, const QByteArray &body);
RawOutcome rawGet(const DevService &service, const QByteArray &path);
