#include "Connection.h"

#include <openssl/ssl.h>

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace {

constexpr int lingerMs = 1000;

} // namespace

Connection::Connection(int socket, ssl_ctx_st *tls)
    : m_socket(socket)
{
    const int on = 1;
    ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (tls) {
        m_tls = SSL_new(tls);
        SSL_set_fd(m_tls, m_socket);
    }
}

Connection::~Connection()
{
    close();
    SSL_free(m_tls);
}

bool Connection::handshake()
{
    return !m_tls || SSL_accept(m_tls) == 1;
}

qint64 Connection::read(char *data, qint64 size)
{
    if (!m_tls)
        return ::recv(m_socket, data, static_cast<size_t>(size), 0);
    return SSL_read(m_tls, data, static_cast<int>(std::min<qint64>(size, std::numeric_limits<int>::max())));
}

bool Connection::write(const QByteArray &data)
{
    qsizetype written = 0;
    while (written < data.size()) {
        const char *rest = data.constData() + written;
        const qsizetype size = data.size() - written;
        const ssize_t count = m_tls
            ? SSL_write(m_tls, rest,
                        static_cast<int>(std::min<qsizetype>(size, std::numeric_limits<int>::max())))
            : ::send(m_socket, rest, static_cast<size_t>(size), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

void Connection::finish()
{
    if (m_tls && SSL_is_init_finished(m_tls))
        SSL_shutdown(m_tls);
    ::shutdown(m_socket, SHUT_WR);
    drain();
    close();
}

void Connection::reset()
{
    awaitSent();
    const linger abort = {1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    close();
}

void Connection::interrupt()
{
    const std::lock_guard lock(m_mutex);
    if (m_socket >= 0)
        ::shutdown(m_socket, SHUT_RDWR);
}

void Connection::close()
{
    const std::lock_guard lock(m_mutex);
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
}

/// A reset throws away what is still in the send queue.
void Connection::awaitSent() const
{
    for (int waited = 0; waited < lingerMs; ++waited) {
        int unsent = 0;
        pollfd gone = {m_socket, POLLRDHUP, 0};
        if (::ioctl(m_socket, SIOCOUTQ, &unsent) != 0 || unsent == 0 || ::poll(&gone, 1, 1) != 0)
            return;
    }
}

/// Closing a socket that holds unread bytes resets it, and the peer could lose the answer; so read until it
/// closes.
void Connection::drain() const
{
    char unread[4096];
    pollfd readable = {m_socket, POLLIN, 0};
    while (::poll(&readable, 1, lingerMs) == 1 && ::recv(m_socket, unread, sizeof unread, 0) > 0) { }
}
