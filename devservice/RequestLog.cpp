#include "RequestLog.h"

void RequestLog::addConnection()
{
    const std::lock_guard lock(m_mutex);
    ++m_connections;
}

void RequestLog::add(ServiceRequest request)
{
    request.body.truncate(keptBytes);
    for (ReceivedPart &part : request.parts)
        part.data.truncate(keptBytes);
    const std::lock_guard lock(m_mutex);
    ++m_total;
    ++m_counts[request.path];
    if (m_requests.size() == keptRequests)
        m_requests.removeFirst();
    m_requests.append(std::move(request));
}

int RequestLog::connections() const
{
    const std::lock_guard lock(m_mutex);
    return m_connections;
}

int RequestLog::total() const
{
    const std::lock_guard lock(m_mutex);
    return m_total;
}

int RequestLog::count(const QString &path) const
{
    const std::lock_guard lock(m_mutex);
    return m_counts.value(path);
}

QMap<QString, int> RequestLog::counts() const
{
    const std::lock_guard lock(m_mutex);
    return m_counts;
}

QList<ServiceRequest> RequestLog::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}
