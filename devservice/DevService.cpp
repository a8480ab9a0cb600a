#include "DevService.h"

#include "Connection.h"
#include "Endpoints.h"
#include "Faults.h"
#include "HttpReading.h"
#include "Listener.h"
#include "RequestLog.h"
#include "StoreAccount.h"

#include <QFile>

#include <openssl/ssl.h>

#include <atomic>
#include <condition_variable>
#include <list>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype fillerPiece = 65536;
constexpr int slowPieces = 16;
constexpr std::chrono::milliseconds slowPause(20);

struct ContextDeleter
{
    void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
};
using TlsContext = std::unique_ptr<SSL_CTX, ContextDeleter>;

TlsContext makeTlsContext(const DevService::Options &options)
{
    TlsContext context(SSL_CTX_new(TLS_server_method()));
    const QByteArray certificate = QFile::encodeName(options.certificate);
    const QByteArray key = QFile::encodeName(options.key);
    const bool usable = SSL_CTX_use_certificate_chain_file(context.get(), certificate.constData()) == 1
        && SSL_CTX_use_PrivateKey_file(context.get(), key.constData(), SSL_FILETYPE_PEM) == 1
        && SSL_CTX_check_private_key(context.get()) == 1;
    return usable ? std::move(context) : TlsContext();
}

QString absolutePath(const QString &endpoint)
{
    const bool isAbsolute = endpoint.startsWith(u'/') || endpoint == "*"_L1;
    return isAbsolute ? endpoint : apiRoot() + endpoint;
}

} // namespace

class DevService::Private
{
public:
    explicit Private(Options serviceOptions)
        : options(std::move(serviceOptions))
    {
    }

    bool usesTls() const { return !options.certificate.isEmpty() || !options.key.isEmpty(); }
    QString origin(bool tls) const;

    void take(int socket);
    void joinWorkers(bool onlyFinished);
    void interruptWorkers();

    void serve(Connection &connection);
    FaultScript scriptFor(const ServiceRequest &request, const QString &fault);
    ServiceAnswer ordinaryAnswer(const ServiceRequest &request);
    void play(Connection &connection, const FaultScript &script);
    bool writeSlowly(Connection &connection, const QByteArray &bytes);
    bool writeFiller(Connection &connection, const FaultScript &script);

    /// False when the service stops first.
    bool pause(std::chrono::milliseconds time);
    bool awaitRelease();

    struct Worker
    {
        Worker(int socket, SSL_CTX *tls)
            : connection(socket, tls)
        {
        }
        Connection connection;
        std::atomic<bool> finished = false;
        std::thread thread;
    };

    const Options options;
    TlsContext tls;
    Listener listener;
    EndpointTable endpoints;
    FaultBoard faults;
    RequestLog log;

    std::mutex workersMutex;
    std::list<Worker> workers;

    std::mutex answersMutex;
    QHash<QString, ServiceAnswer> answers;

    mutable std::mutex waitMutex;
    std::condition_variable waitOver;
    bool stopping = false;
    int held = 0;
    int releases = 0;
};

QString DevService::Private::origin(bool withTls) const
{
    return u"%1://127.0.0.1:%2"_s.arg(withTls ? u"https"_s : u"http"_s).arg(listener.port());
}

void DevService::Private::take(int socket)
{
    log.addConnection();
    joinWorkers(true);
    const std::lock_guard lock(workersMutex);
    Worker &worker = workers.emplace_back(socket, tls.get());
    worker.thread = std::thread([this, &worker] {
        serve(worker.connection);
        worker.finished = true;
    });
}

void DevService::Private::joinWorkers(bool onlyFinished)
{
    std::list<Worker> leaving;
    {
        const std::lock_guard lock(workersMutex);
        for (auto worker = workers.begin(); worker != workers.end();) {
            const auto current = worker++;
            if (!onlyFinished || current->finished)
                leaving.splice(leaving.end(), workers, current);
        }
    }
    for (Worker &worker : leaving)
        worker.thread.join();
}

void DevService::Private::interruptWorkers()
{
    const std::lock_guard lock(workersMutex);
    for (Worker &worker : workers)
        worker.connection.interrupt();
}

void DevService::Private::serve(Connection &connection)
{
    if (!connection.handshake()) {
        connection.finish();
        return;
    }
    QString fault;
    const auto wantsBody = [this, &fault](const ServiceRequest &head) {
        if (head.path.startsWith("/_dev/"_L1))
            return true;
        fault = faults.take(head.path);
        const FaultKind *kind = findFault(fault);
        return !kind || kind->phase != FaultKind::Phase::BeforeBody;
    };
    const std::optional<ServiceRequest> request = readRequest(connection, wantsBody);
    if (!request) {
        connection.finish();
        return;
    }
    if (!request->path.startsWith("/_dev/"_L1))
        log.add(*request);
    const FaultKind *kind = findFault(fault);
    if (kind && kind->phase == FaultKind::Phase::Held && !awaitRelease())
        return;
    play(connection, scriptFor(*request, fault));
}

FaultScript DevService::Private::scriptFor(const ServiceRequest &request, const QString &fault)
{
    const FaultKind *kind = findFault(fault);
    if (!kind)
        return {.bytes = rendered(ordinaryAnswer(request))};
    FaultInput input;
    if (kind->phase == FaultKind::Phase::Bent || kind->phase == FaultKind::Phase::Held)
        input.ordinary = rendered(ordinaryAnswer(request));
    input.url = (origin(usesTls()) + request.path).toUtf8();
    input.plainUrl = (origin(false) + request.path).toUtf8();
    input.arguments = fault.split(u':').sliced(1);
    return kind->script(input);
}

ServiceAnswer DevService::Private::ordinaryAnswer(const ServiceRequest &request)
{
    {
        const std::lock_guard lock(answersMutex);
        const auto answer = answers.constFind(request.path);
        if (answer != answers.constEnd())
            return *answer;
    }
    return endpoints.answer(request);
}

void DevService::Private::play(Connection &connection, const FaultScript &script)
{
    const bool sent = (script.slow ? writeSlowly(connection, script.bytes) : connection.write(script.bytes))
        && writeFiller(connection, script) && connection.write(script.tail);
    if (script.end == FaultScript::End::Reset)
        connection.reset();
    else if (sent && script.end == FaultScript::End::Finish)
        connection.finish();
    else
        connection.close();
}

bool DevService::Private::writeSlowly(Connection &connection, const QByteArray &bytes)
{
    const qsizetype body = bytes.indexOf("\r\n\r\n") + 4;
    const qsizetype piece = qMax(qsizetype(1), (bytes.size() - body) / slowPieces);
    bool going = connection.write(bytes.left(body));
    for (qsizetype at = body; going && at < bytes.size(); at += piece)
        going = pause(slowPause) && connection.write(bytes.mid(at, piece));
    return going;
}

bool DevService::Private::writeFiller(Connection &connection, const FaultScript &script)
{
    const bool endless = script.fillerSize < 0;
    const QByteArray piece(script.fillerSize == 0 ? 0 : fillerPiece, script.filler);
    for (qint64 left = script.fillerSize; endless || left > 0; left -= piece.size()) {
        if (!connection.write(endless ? piece : piece.left(qMin(left, qint64(piece.size())))))
            return false;
    }
    return true;
}

bool DevService::Private::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(waitMutex);
    return !waitOver.wait_for(lock, time, [this] { return stopping; });
}

bool DevService::Private::awaitRelease()
{
    std::unique_lock lock(waitMutex);
    ++held;
    waitOver.wait(lock, [this, before = releases] { return stopping || releases != before; });
    --held;
    return !stopping;
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
                       [this] { return d->origin(d->usesTls()) + "/download"_L1; });
    addDevEndpoints(d->endpoints, *this);
}

DevService::~DevService()
{
    stop();
}

bool DevService::start(QString *error)
{
    stop();
    if (d->usesTls() && !(d->tls = makeTlsContext(d->options))) {
        if (error)
            *error = u"Cannot use the certificate %1 with the key %2"_s.arg(d->options.certificate,
                                                                            d->options.key);
        return false;
    }
    {
        const std::lock_guard lock(d->waitMutex);
        d->stopping = false;
    }
    if (!d->listener.start(
            d->options.port, [this](int socket) { d->take(socket); }, error))
        return false;
    d->listener.setRefusing(d->faults.refuses());
    return true;
}

void DevService::stop()
{
    d->listener.stop();
    {
        const std::lock_guard lock(d->waitMutex);
        d->stopping = true;
    }
    d->waitOver.notify_all();
    d->interruptWorkers();
    d->joinWorkers(false);
}

quint16 DevService::port() const
{
    return d->listener.port();
}

QString DevService::apiBase() const
{
    return d->origin(d->usesTls()) + apiRoot();
}

int DevService::requestCount(const QString &path) const
{
    return d->log.count(absolutePath(path));
}

int DevService::requestCount() const
{
    return d->log.total();
}

QMap<QString, int> DevService::requestCounts() const
{
    return d->log.counts();
}

int DevService::connectionCount() const
{
    return d->log.connections();
}

QList<ServiceRequest> DevService::requests() const
{
    return d->log.requests();
}

bool DevService::setFault(const QString &endpointPath, const QString &fault, int times)
{
    const bool known = d->faults.set(absolutePath(endpointPath), fault, times);
    d->listener.setRefusing(d->faults.refuses());
    return known;
}

void DevService::clearFaults()
{
    d->faults.clear();
    d->listener.setRefusing(false);
}

void DevService::setAnswer(const QString &endpointPath, const ServiceAnswer &answer)
{
    const std::lock_guard lock(d->answersMutex);
    d->answers.insert(absolutePath(endpointPath), answer);
}

void DevService::clearAnswers()
{
    const std::lock_guard lock(d->answersMutex);
    d->answers.clear();
}

int DevService::heldCount() const
{
    const std::lock_guard lock(d->waitMutex);
    return d->held;
}

void DevService::release()
{
    {
        const std::lock_guard lock(d->waitMutex);
        ++d->releases;
    }
    d->waitOver.notify_all();
}
