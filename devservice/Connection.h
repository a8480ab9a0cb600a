#pragma once

#include <QByteArray>

#include <mutex>

struct ssl_ctx_st;
struct ssl_st;

/// One accepted connection, with or without TLS. Used by one thread, which blocks in it; any other thread may
/// call `interrupt`, which makes every present and later call fail.
class Connection
{
public:
    /// Takes the socket over. `tls` may be null and must outlive the connection.
    Connection(int socket, ssl_ctx_st *tls);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /// The TLS handshake; true at once without TLS.
    bool handshake();
    /// Bytes read, 0 at the end, negative after an error. Waits for at least one byte.
    qint64 read(char *data, qint64 size);
    /// Writes everything, or returns false when the peer has gone.
    bool write(const QByteArray &data);

    /// Ends the connection in order, so that what was written arrives.
    void finish();
    /// Ends the connection with a reset, after what was written has arrived.
    void reset();
    /// Ends the connection at once, whatever is still unread.
    void close();
    void interrupt();

    int socket() const { return m_socket; }

private:
    void awaitSent() const;
    void drain() const;

    std::mutex m_mutex;
    int m_socket;
    ssl_st *m_tls = nullptr;
};
