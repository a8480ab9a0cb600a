#include "DevService.h"

#include "Endpoints.h"
#include "Faults.h"
#include "HttpServer.h"
#include "StoreAccount.h"

#include <condition_variable>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype keptRequests = 1000;
constexpr qsizetype keptBytes = qsizetype(1) << 20;

QString absolutePath(const QString &endpoint)
{
    const bool isAbsolute = endpoint.startsWith(u'/') || endpoint == "*"_L1;
    return isAbsolute ? endpoint : apiRoot() + endpoint;
}

struct SetFault
{
    QString fault;
    /// Negative: until cleared.
    int times;
};

} // namespace

class DevService::Private
{
public:
    explicit Private(Options serviceOptions)
        : options(std::move(serviceOptions))
    {
    }

    QString origin(bool tls) const;
    ServiceAnswer answer(const ServiceRequest &request);
    QString note(ServiceRequest request);
    bool awaitRelease();
    ServiceAnswer ordinaryAnswer(const ServiceRequest &request);

    const Options options;
    const bool usesTls = !options.certificate.isEmpty() || !options.key.isEmpty();
    EndpointTable endpoints;
    HttpServer server{[this](const ServiceRequest &request) { return answer(request); }};

    /// Guards all that follows.
    mutable std::mutex mutex;
    mutable std::condition_variable heldChanged;
    QMap<QString, int> counts;
    QList<ServiceRequest> requests;
    QHash<QString, SetFault> faults;
    QHash<QString, ServiceAnswer> answers;
    bool stopping = false;
    int held = 0;
    int releases = 0;
};

QString DevService::Private::origin(bool tls) const
{
    return u"%1://127.0.0.1:%2"_s.arg(tls ? u"https"_s : u"http"_s).arg(server.port());
}

ServiceAnswer DevService::Private::answer(const ServiceRequest &request)
{
    if (request.path.startsWith("/_dev/"_L1))
        return endpoints.answer(request);
    const QString fault = note(request);
    const FaultKind *kind = findFault(fault);
    if (!kind)
        return ordinaryAnswer(request);
    if (kind->name == "hold"_L1 && !awaitRelease())
        return errorAnswer(u"The service was stopped"_s, 503);
    return kind->answer({kind->bends ? ordinaryAnswer(request) : ServiceAnswer(),
                         (origin(usesTls) + request.path).toUtf8(), (origin(false) + request.path).toUtf8(),
                         fault.split(u':').sliced(1)});
}

/// The fault that the request meets, which counts as one use of it.
QString DevService::Private::note(ServiceRequest request)
{
    request.body.truncate(keptBytes);
    for (ReceivedPart &part : request.parts)
        part.data.truncate(keptBytes);
    const std::lock_guard lock(mutex);
    ++counts[request.path];
    if (requests.size() == keptRequests)
        requests.removeFirst();
    requests.append(request);
    auto entry = faults.find(request.path);
    if (entry == faults.end())
        entry = faults.find(u"*"_s);
    if (entry == faults.end())
        return {};
    const QString fault = entry->fault;
    if (entry->times > 0 && --entry->times == 0)
        faults.erase(entry);
    return fault;
}

/// False when the service stops first.
bool DevService::Private::awaitRelease()
{
    std::unique_lock lock(mutex);
    ++held;
    heldChanged.notify_all();
    heldChanged.wait(lock, [this, before = releases] { return stopping || releases != before; });
    --held;
    return !stopping;
}

ServiceAnswer DevService::Private::ordinaryAnswer(const ServiceRequest &request)
{
    {
        const std::lock_guard lock(mutex);
        const auto answer = answers.constFind(request.path);
        if (answer != answers.constEnd())
            return *answer;
    }
    return endpoints.answer(request);
}

DevService::DevService()
    : DevService(Options())
{
}

DevService::DevService(Options options)
    : d(std::make_unique<Private>(std::move(options)))
{
    addWorkerEndpoints(d->endpoints);
    const auto account = std::make_shared<StoreAccount>();
    addXdfEndpoints(d->endpoints, account);
    addPatchEndpoints(d->endpoints, account);
    addStockEndpoints(d->endpoints);
    addFeedbackEndpoints(d->endpoints);
    addUpdateEndpoints(d->endpoints, d->options.updateVersion,
                       [this] { return d->origin(d->usesTls) + "/download"_L1; });
    addDevEndpoints(d->endpoints, *this);
}

DevService::~DevService()
{
    stop();
}

bool DevService::start(QString *error)
{
    stop();
    {
        const std::lock_guard lock(d->mutex);
        d->stopping = false;
    }
    QString reason;
    const bool started = d->server.start(d->options.port, d->options.certificate, d->options.key, &reason);
    if (error)
        *error = reason;
    return started;
}

void DevService::stop()
{
    {
        const std::lock_guard lock(d->mutex);
        d->stopping = true;
    }
    d->heldChanged.notify_all();
    d->server.stop();
}

quint16 DevService::port() const
{
    return d->server.port();
}

QString DevService::apiBase() const
{
    return d->origin(d->usesTls) + apiRoot();
}

int DevService::requestCount(const QString &path) const
{
    return requestCounts().value(absolutePath(path));
}

int DevService::requestCount() const
{
    const QMap<QString, int> counts = requestCounts();
    return std::accumulate(counts.begin(), counts.end(), 0);
}

QMap<QString, int> DevService::requestCounts() const
{
    const std::lock_guard lock(d->mutex);
    return d->counts;
}

int DevService::connectionCount() const
{
    return d->server.connectionCount();
}

QList<ServiceRequest> DevService::requests() const
{
    const std::lock_guard lock(d->mutex);
    return d->requests;
}

bool DevService::setFault(const QString &endpointPath, const QString &fault, int times)
{
    const bool removes = fault == "none"_L1;
    if (!removes && !findFault(fault))
        return false;
    const std::lock_guard lock(d->mutex);
    if (removes || times == 0)
        d->faults.remove(absolutePath(endpointPath));
    else
        d->faults.insert(absolutePath(endpointPath), {fault, times});
    return true;
}

void DevService::clearFaults()
{
    const std::lock_guard lock(d->mutex);
    d->faults.clear();
}

void DevService::setAnswer(const QString &endpointPath, const ServiceAnswer &answer)
{
    const std::lock_guard lock(d->mutex);
    d->answers.insert(absolutePath(endpointPath), answer);
}

int DevService::heldCount() const
{
    const std::lock_guard lock(d->mutex);
    return d->held;
}

bool DevService::awaitHeld(int count) const
{
    std::unique_lock lock(d->mutex);
    return d->heldChanged.wait_for(lock, std::chrono::minutes(1), [&] { return d->held == count; });
}

void DevService::release()
{
    {
        const std::lock_guard lock(d->mutex);
        ++d->releases;
    }
    d->heldChanged.notify_all();
}
