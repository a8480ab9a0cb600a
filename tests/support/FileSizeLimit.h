#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/// While it lives, no file of this process can grow past `size` bytes, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t size)
        : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit now{size, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &now);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    void (*m_oldHandler)(int);
    rlimit m_old{};
};
