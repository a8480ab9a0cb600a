#include "HttpReading.h"

#include "Connection.h"

#include <httplib.h>

#include <array>
#include <utility>

namespace {

constexpr size_t maxBody = size_t(1) << 30;

/// The connection as the HTTP library sees it. It reads requests through it; what the service answers goes
/// past it, since a fault may not be HTTP at all.
class RequestStream : public httplib::Stream
{
public:
    explicit RequestStream(Connection &connection)
        : m_connection(connection)
    {
    }

    void dropWrites() { m_dropsWrites = true; }

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    void get_remote_ip_and_port(std::string &ip, int &port) const override
    {
        get_local_ip_and_port(ip, port);
    }
    void get_local_ip_and_port(std::string &ip, int &port) const override
    {
        ip = "127.0.0.1";
        port = 0;
    }
    socket_t socket() const override { return m_connection.socket(); }

    /// The library reads headers byte by byte.
    ssize_t read(char *data, size_t size) override
    {
        if (m_position == m_filled) {
            m_filled = m_connection.read(m_buffer.data(), qint64(m_buffer.size()));
            m_position = 0;
            if (m_filled <= 0)
                return std::exchange(m_filled, 0);
        }
        const qint64 count = std::min(qint64(size), m_filled - m_position);
        std::copy_n(m_buffer.data() + m_position, count, data);
        m_position += count;
        return count;
    }

    ssize_t write(const char *data, size_t size) override
    {
        const bool done = m_dropsWrites || m_connection.write(QByteArray(data, qsizetype(size)));
        return done ? ssize_t(size) : -1;
    }

private:
    Connection &m_connection;
    std::array<char, 16384> m_buffer = {};
    qint64 m_position = 0;
    qint64 m_filled = 0;
    bool m_dropsWrites = false;
};

ServiceRequest headOf(const httplib::Request &head)
{
    ServiceRequest request;
    request.method = QByteArray::fromStdString(head.method);
    request.path = QString::fromStdString(head.path);
    for (const auto &[name, value] : head.headers)
        request.headers.append({QByteArray::fromStdString(name), QByteArray::fromStdString(value)});
    return request;
}

/// The library hands the parts on in their order, which its own collection of them would lose.
bool readForm(const httplib::ContentReader &reader, ServiceRequest &request)
{
    const bool complete = reader(
        [&request](const httplib::MultipartFormData &part) {
            request.parts.append({QString::fromStdString(part.name), QString::fromStdString(part.filename),
                                  QByteArray::fromStdString(part.content_type), QByteArray(), 0});
            return true;
        },
        [&request](const char *data, size_t size) {
            request.parts.last().data.append(data, qsizetype(size));
            request.parts.last().size += qint64(size);
            return true;
        });
    request.bodySize = complete ? request.header("Content-Length").toLongLong() : 0;
    return complete;
}

bool readPlain(const httplib::ContentReader &reader, ServiceRequest &request)
{
    const bool complete = reader([&request](const char *data, size_t size) {
        request.body.append(data, qsizetype(size));
        return true;
    });
    request.bodySize = request.body.size();
    return complete;
}

class RequestReader : public httplib::Server
{
public:
    std::optional<ServiceRequest> read(Connection &connection,
                                       const std::function<bool(const ServiceRequest &)> &wantsBody)
    {
        RequestStream stream(connection);
        std::optional<ServiceRequest> request;
        Get(".*", [&](const httplib::Request &head, httplib::Response &) {
            request = headOf(head);
            request->complete = wantsBody(*request);
            stream.dropWrites();
        });
        Post(".*",
             [&](const httplib::Request &head, httplib::Response &, const httplib::ContentReader &reader) {
                 request = headOf(head);
                 if (wantsBody(*request))
                     request->complete = head.is_multipart_form_data() ? readForm(reader, *request)
                                                                       : readPlain(reader, *request);
                 stream.dropWrites();
             });
        set_payload_max_length(maxBody);
        bool closed = false;
        process_request(stream, true, closed, nullptr);
        return request;
    }
};

} // namespace

std::optional<ServiceRequest> readRequest(Connection &connection,
                                          const std::function<bool(const ServiceRequest &)> &wantsBody)
{
    return RequestReader().read(connection, wantsBody);
}

QByteArray rendered(const ServiceAnswer &answer)
{
    QByteArray result = "HTTP/1.1 " + QByteArray::number(answer.status) + ' '
        + (answer.status < 400 ? "OK" : "Refused") + "\r\n";
    if (!answer.contentType.isEmpty())
        result += "Content-Type: " + answer.contentType + "\r\n";
    for (const auto &[name, value] : answer.headers)
        result += name + ": " + value + "\r\n";
    result += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\nConnection: close\r\n\r\n";
    return result + answer.body;
}
