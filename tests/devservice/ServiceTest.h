#pragma once

#include "DevService.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QNetworkReply>
#include <QSslError>
#include <QTest>

/// The outcome of one request for a client.
struct Outcome
{
    int status = 0;
    QByteArray contentType;
    QByteArray body;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QList<QSslError::SslError> tlsErrors;
    /// How many pieces the body came in.
    int pieces = 0;

    QJsonObject json() const;
    /// The member with the reason for a refusal.
    QString refusal() const { return json().value(QStringLiteral("error")).toString(); }
};

using Fields = QList<std::pair<QByteArray, QByteArray>>;

struct FilePart
{
    QByteArray name;
    QByteArray bytes;
    QByteArray fileName = "tune.kvt";
};

/// Each sends one request through Qt and waits for its end. `authority` is the PEM file of the certificate to
/// trust, or empty.
Outcome get(const QString &url, const QString &authority = {});
Outcome post(const QString &url, const QByteArray &body, const QByteArray &type = "application/json",
             const QString &authority = {});
/// The fields, then the files.
Outcome postForm(const QString &url, const Fields &fields, const QList<FilePart> &files);

/// Sends the bytes and returns all that is received until the service closes the connection. Any thread. With
/// `isCut` the sending side is shut down after them.
QByteArray rawExchange(const DevService &service, const QByteArray &request, bool isCut = false);
QByteArray rawGet(const DevService &service, const QByteArray &path);

/// A ticket with all required members, as the body of a request.
QByteArray ticketOf(const QByteArray &type);

/// A separate stand-in for each test, and the names of its endpoints.
class ServiceTest : public QObject
{
    Q_OBJECT

protected:
    QString url(const QString &endpoint) const { return m_service->apiBase() + endpoint; }
    Outcome send(const QString &endpoint, const QJsonObject &body) const;
    Outcome askWorker(const QByteArray &operation, const QList<FilePart> &files,
                      const Fields &fields = {}) const;

    std::unique_ptr<DevService> m_service;

private slots:
    void init();
    void cleanup();
};
