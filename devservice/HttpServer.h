#pragma once

#include "ServiceTypes.h"

#include <atomic>
#include <functional>
#include <memory>

/// HTTP on 127.0.0.1, with or without TLS, in threads of its own. One request per connection.
class HttpServer
{
public:
    /// Runs in the thread of the request's connection.
    using Handler = std::function<ServiceAnswer(const ServiceRequest &)>;

    explicit HttpServer(Handler handler);
    /// Stops.
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// Port 0 takes any free one; without certificate and key it speaks no TLS. False, with the reason in
    /// `error`, when they cannot be used.
    bool start(quint16 port, const QString &certificate, const QString &key, QString *error);
    /// Breaks off what is being sent and joins every thread, when the last handler has returned. A client
    /// that neither sends nor reads may keep it for five seconds.
    void stop();

    /// The one that it listens on, or did last.
    quint16 port() const { return m_port; }
    /// Accepted so far, whether or not a request came over them.
    int connectionCount() const { return m_connectionCount; }

private:
    struct Running;

    const Handler m_handler;
    std::unique_ptr<Running> m_running;
    std::atomic<quint16> m_port = 0;
    std::atomic<int> m_connectionCount = 0;
};
