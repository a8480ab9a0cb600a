#include "Listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int backlog = 64;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A bound socket, or -1.
int boundSocket(quint16 port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (fd >= 0 && ::bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return fd;
    const int reason = errno;
    if (fd >= 0)
        ::close(fd);
    errno = reason;
    return -1;
}

quint16 portOf(int fd)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size);
    return ntohs(address.sin_port);
}

} // namespace

Listener::~Listener()
{
    stop();
}

bool Listener::start(quint16 port, Accepted accepted, QString *error)
{
    if (!bindTo(port, error))
        return false;
    m_accepted = std::move(accepted);
    m_stopping = false;
    m_refusing = false;
    m_thread = std::thread(&Listener::acceptAll, this);
    const std::lock_guard lock(m_mutex);
    m_running = true;
    return true;
}

/// A port that the system chose is given back as soon as the socket stops listening; one that was asked for
/// by number stays ours. So a free port is found first and then asked for.
bool Listener::bindTo(quint16 port, QString *error)
{
    const int probe = port == 0 ? boundSocket(0) : -1;
    m_socket = boundSocket(probe >= 0 ? portOf(probe) : port);
    if (probe >= 0)
        ::close(probe);
    if (m_socket >= 0 && ::listen(m_socket, backlog) == 0 && ::pipe2(m_wakePipe, O_CLOEXEC) == 0) {
        m_port = portOf(m_socket);
        return true;
    }
    if (error)
        *error =
            QStringLiteral("Cannot listen on port %1: %2").arg(port).arg(QString::fromUtf8(strerror(errno)));
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
    return false;
}

void Listener::stop()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_running = false;
    }
    m_stopping = true;
    wake();
    m_thread.join();
    for (int *fd : {&m_socket, &m_wakePipe[0], &m_wakePipe[1]}) {
        ::close(*fd);
        *fd = -1;
    }
}

void Listener::setRefusing(bool refusing)
{
    const std::lock_guard lock(m_mutex);
    if (!m_running || m_refusing == refusing)
        return;
    m_refusing = refusing;
    if (refusing)
        ::shutdown(m_socket, SHUT_RDWR);
    else
        ::listen(m_socket, backlog);
    wake();
}

void Listener::wake()
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(m_wakePipe[1], &byte, 1);
}

void Listener::acceptAll()
{
    while (!m_stopping) {
        pollfd waits[] = {{m_wakePipe[0], POLLIN, 0}, {m_socket, POLLIN, 0}};
        ::poll(waits, m_refusing ? 1 : 2, -1);
        char wakeByte = 0;
        if (waits[0].revents & POLLIN) {
            [[maybe_unused]] const ssize_t taken = ::read(m_wakePipe[0], &wakeByte, 1);
            continue;
        }
        if (!(waits[1].revents & POLLIN) || m_refusing)
            continue;
        const int peer = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (peer >= 0)
            m_accepted(peer);
    }
}
