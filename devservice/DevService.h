#pragma once

#include "ServiceTypes.h"

#include <QMap>

#include <memory>

/// The local stand-in of the remote service: real HTTP, with or without TLS, on 127.0.0.1, in threads of its
/// own. Every method but start and stop may be called from any thread. One request per connection.
class DevService
{
public:
    struct Options
    {
        /// 0 takes any free port.
        quint16 port = 0;
        /// Paths of PEM files; both empty: without TLS.
        QString certificate = {};
        QString key = {};
        /// What the update check is told.
        QString updateVersion = QStringLiteral("4.0.2");
    };

    DevService();
    explicit DevService(Options options);
    ~DevService();
    DevService(const DevService &) = delete;
    DevService &operator=(const DevService &) = delete;

    /// False, with the reason in `error` (may be null), when the certificate or the port cannot be used.
    bool start(QString *error = nullptr);
    /// Answers held requests with 503, breaks off what is being sent, and joins every thread. A client that
    /// neither sends nor reads may keep it for five seconds. Does nothing when not started.
    void stop();

    quint16 port() const;
    /// Absolute, with "/api/" at its end.
    QString apiBase() const;

    // What was received. Paths are relative to the API base, or absolute with a leading "/".

    /// Requests to that endpoint, whatever became of them.
    int requestCount(const QString &path) const;
    int requestCount() const;
    QMap<QString, int> requestCounts() const;
    /// Connections accepted, whether or not a request came over them.
    int connectionCount() const;
    /// The latest 1000, the oldest first; of each body and part the first MiB.
    QList<ServiceRequest> requests() const;

    // Faults; README.md lists them

    /// Every request to the endpoint ("*": to any without a fault of its own) meets the fault from now on, or
    /// the next `times` of them. "none" takes it away. False for an unknown fault.
    bool setFault(const QString &endpointPath, const QString &fault, int times = -1);
    void clearFaults();
    /// What the endpoint answers from now on, in place of its own answer.
    void setAnswer(const QString &endpointPath, const ServiceAnswer &answer);
    /// Requests held at this moment.
    int heldCount() const;
    /// Waits until that many requests are held; false when they are not within a minute.
    bool awaitHeld(int count) const;
    /// Lets the held requests go on to their ordinary answers.
    void release();

private:
    class Private;
    std::unique_ptr<Private> d;
};
