#pragma once

#include <QtGlobal>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

/// While it lives, this thread and those that it starts have the file permissions of an ordinary user, even
/// when the tests run as root.
class PlainRights
{
public:
    PlainRights()
    {
        ::syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct now[_LINUX_CAPABILITY_U32S_3] = {m_before[0], m_before[1]};
        now[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        ::syscall(SYS_capset, &m_header, now);
    }
    ~PlainRights() { ::syscall(SYS_capset, &m_header, m_before); }
    Q_DISABLE_COPY_MOVE(PlainRights)

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[_LINUX_CAPABILITY_U32S_3] = {};
};
