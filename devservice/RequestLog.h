#pragma once

#include "ServiceTypes.h"

#include <QMap>

#include <mutex>

/// What the service has received, for any thread. Counts are kept for ever, requests only the latest of them,
/// and of each part and body the first MiB.
class RequestLog
{
public:
    static constexpr qsizetype keptRequests = 1000;
    static constexpr qsizetype keptBytes = qsizetype(1) << 20;

    void addConnection();
    void add(ServiceRequest request);

    int connections() const;
    int total() const;
    /// The path as received, with its leading "/".
    int count(const QString &path) const;
    QMap<QString, int> counts() const;
    QList<ServiceRequest> requests() const;

private:
    mutable std::mutex m_mutex;
    int m_connections = 0;
    int m_total = 0;
    QMap<QString, int> m_counts;
    QList<ServiceRequest> m_requests;
};
