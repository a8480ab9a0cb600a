#include "HttpServer.h"

#include "Endpoints.h"

#include <QFile>

#include <httplib.h>

#include <latch>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// More than any test has under way at once: a held request keeps a thread.
constexpr size_t threadCount = 64;
constexpr const char *host = "127.0.0.1";
constexpr qint64 largestPiece = 65536;
constexpr qint64 slowPieces = 16;
constexpr std::chrono::milliseconds slowPause(20);

/// The HTTP library hands each connection that it accepts to its queue, which is where they can be counted.
class CountingQueue : public httplib::TaskQueue
{
public:
    // Nothing in 0.11, whether there was room in 0.18.
    using Enqueued = decltype(std::declval<httplib::TaskQueue &>().enqueue({}));

    explicit CountingQueue(std::atomic<int> &count)
        : m_count(count)
    {
    }

    Enqueued enqueue(std::function<void()> task) override
    {
        ++m_count;
        return m_pool.enqueue(std::move(task));
    }
    void shutdown() override { m_pool.shutdown(); }

private:
    std::atomic<int> &m_count;
    httplib::ThreadPool m_pool{threadCount};
};

ServiceRequest headOf(const httplib::Request &head)
{
    ServiceRequest request;
    request.method = QByteArray::fromStdString(head.method);
    request.path = QString::fromStdString(head.path);
    request.bodySize = QByteArray::fromStdString(head.get_header_value("Content-Length")).toLongLong();
    return request;
}

/// cpp-httplib hands the parts on in their order, which its own collection of them would lose.
bool readForm(const httplib::ContentReader &reader, ServiceRequest &request)
{
    return reader(
        [&request](const auto &part) {
            request.parts.append({QString::fromStdString(part.name), QString::fromStdString(part.filename),
                                  QByteArray::fromStdString(part.content_type), QByteArray(), 0});
            return true;
        },
        [&request](const char *data, size_t size) {
            request.parts.last().data.append(data, qsizetype(size));
            request.parts.last().size += qint64(size);
            return true;
        });
}

bool readPlain(const httplib::ContentReader &reader, ServiceRequest &request)
{
    return reader([&request](const char *data, size_t size) {
        request.body.append(data, qsizetype(size));
        return true;
    });
}

bool sendPiece(const ServiceAnswer &answer, qint64 offset, const httplib::DataSink &sink)
{
    const qint64 size = answer.body.size();
    const bool isHalf = answer.delivery == ServiceAnswer::Delivery::Half;
    const bool isSlow = answer.delivery == ServiceAnswer::Delivery::Slow;
    const qint64 left = (isHalf ? size / 2 : size) - offset;
    if (left <= 0)
        return false;
    if (isSlow)
        std::this_thread::sleep_for(slowPause);
    const qint64 piece = isSlow ? qMax(qint64(1), size / slowPieces) : largestPiece;
    return sink.write(answer.body.constData() + offset, size_t(qMin(piece, left)));
}

/// Every body goes through a provider: one that is set as a whole may be compressed on its way.
void send(const ServiceAnswer &answer, httplib::Response &response)
{
    response.status = answer.status;
    for (const auto &[name, value] : answer.headers)
        response.set_header(name.toStdString(), value.toStdString());
    const std::string type = answer.contentType.toStdString();
    if (answer.delivery == ServiceAnswer::Delivery::Endless) {
        response.set_content_provider(type, [](size_t, const httplib::DataSink &sink) {
            static const std::string piece(largestPiece, 'K');
            return sink.write(piece.data(), piece.size());
        });
    } else if (answer.body.isEmpty()) {
        response.set_content({}, type);
    } else {
        response.set_content_provider(size_t(answer.body.size()), type,
                                      [answer](size_t offset, size_t, const httplib::DataSink &sink) {
                                          return sendPiece(answer, qint64(offset), sink);
                                      });
    }
}

/// The end of such a body would be that of the connection, and the client waits for an answer before it.
httplib::Server::HandlerResponse refuseBodyWithoutEnd(const httplib::Request &head,
                                                      httplib::Response &response)
{
    if (head.method != "POST" || head.has_header("Content-Length") || head.has_header("Transfer-Encoding"))
        return httplib::Server::HandlerResponse::Unhandled;
    send(errorAnswer(u"A POST needs a Content-Length"_s, 411), response);
    return httplib::Server::HandlerResponse::Handled;
}

} // namespace

struct HttpServer::Running
{
    std::unique_ptr<httplib::Server> server;
    std::latch listening{1};
    std::thread thread = {};
};

HttpServer::HttpServer(Handler handler)
    : m_handler(std::move(handler))
{
}

HttpServer::~HttpServer()
{
    stop();
}

bool HttpServer::start(quint16 port, const QString &certificate, const QString &key, QString *error)
{
    stop();
    std::unique_ptr<httplib::Server> server;
    if (certificate.isEmpty() && key.isEmpty())
        server = std::make_unique<httplib::Server>();
    else
        server = std::make_unique<httplib::SSLServer>(QFile::encodeName(certificate).constData(),
                                                      QFile::encodeName(key).constData());
    if (!server->is_valid()) {
        *error = u"Cannot use the certificate %1 with the key %2"_s.arg(certificate, key);
        return false;
    }
    // cpp-httplib's own options would let two services share a port.
    server->set_socket_options([](socket_t socket) {
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    server->set_keep_alive_max_count(1);
    server->set_tcp_nodelay(true);
    server->set_pre_routing_handler(refuseBodyWithoutEnd);
    server->Get(".*", [this](const httplib::Request &head, httplib::Response &response) {
        send(m_handler(headOf(head)), response);
    });
    server->Post(".*",
                 [this](const httplib::Request &head, httplib::Response &response,
                        const httplib::ContentReader &reader) {
                     ServiceRequest request = headOf(head);
                     request.complete = head.is_multipart_form_data() ? readForm(reader, request)
                                                                      : readPlain(reader, request);
                     send(m_handler(request), response);
                 });
    int bound = port;
    if (port == 0)
        bound = server->bind_to_any_port(host);
    else if (!server->bind_to_port(host, port))
        bound = -1;
    if (bound < 0) {
        *error = u"Cannot listen on port %1"_s.arg(port);
        return false;
    }
    m_port = quint16(bound);
    m_running.reset(new Running{std::move(server)});
    Running &running = *m_running;
    // cpp-httplib cannot be stopped before it asks for this.
    running.server->new_task_queue = [this, &running] {
        running.listening.count_down();
        return new CountingQueue(m_connectionCount);
    };
    running.thread = std::thread([&running] { running.server->listen_after_bind(); });
    running.listening.wait();
    return true;
}

void HttpServer::stop()
{
    if (!m_running)
        return;
    m_running->server->stop();
    m_running->thread.join();
    m_running.reset();
}
