#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// Accepts connections on 127.0.0.1, in a thread of its own.
class Listener
{
public:
    using Accepted = std::function<void(int socket)>;

    Listener() = default;
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    /// Port 0 takes any free one. `accepted` runs in the listener's thread and takes the socket over.
    bool start(quint16 port, Accepted accepted, QString *error);
    void stop();
    quint16 port() const { return m_port; }

    /// While refusing, connections are refused by the system; the port stays bound. Any thread.
    void setRefusing(bool refusing);

private:
    bool bindTo(quint16 port, QString *error);
    void acceptAll();
    void wake();

    Accepted m_accepted;
    std::thread m_thread;
    std::mutex m_mutex;
    bool m_running = false;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_refusing = false;
    quint16 m_port = 0;
    int m_socket = -1;
    int m_wakePipe[2] = {-1, -1};
};
