// A whole HTTP answer: a loopback server sends exactly the input to any request, and closes. All four kinds
// of request run at once.

#include "FuzzSupport.h"
#include "api/JsonReading.h"
#include "api/VoxApiClient.h"
#include "support/RawHttpServer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>
#include <QNetworkReply>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// Sends what an answer redirects to another host, port or scheme to the server of the input too: nothing
/// looks a name up or leaves the process.
class StayHome : public QNetworkProxyFactory
{
public:
    static inline quint16 port = 0;

    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        if (query.peerHostName() == u"127.0.0.1"_s && query.peerPort() == port)
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return {QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, port)};
    }
};

void stayHome(quint16 port)
{
    static const bool installed = [] {
        // Qt owns it from here on.
        QNetworkProxyFactory::setApplicationProxyFactory(new StayHome);
        return true;
    }();
    FUZZ_EXPECT(installed);
    StayHome::port = port;
}

struct Outcome
{
    int calls = 0;
    QByteArray bytes;
    QJsonObject object;
    QString error;
};

enum Primitive
{
    PostJson,
    GetJson,
    PostMultipart,
    DownloadFile,
    PrimitiveCount
};

constexpr const char *paths[] = {"post-json", "get-json", "post-multipart", "download"};

class Exchange
{
public:
    explicit Exchange(const QByteArray &answer)
        : m_answer(answer)
    {
        m_server.answerAlways({answer});
        stayHome(m_server.port());
        m_client.setApiBase(m_server.baseUrl());
    }

    void run()
    {
        start();
        while (m_calls < PrimitiveCount)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // The replies and their managers go once the event loop turns again.
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        expectCalledOnce();
        expectAgreement();
        expectSentOnce();
    }

private:
    void start()
    {
        const auto path = [](Primitive primitive) { return QString::fromLatin1(paths[primitive]); };
        m_client.postJson(path(PostJson), {{u"a"_s, 1}}, json(PostJson));
        m_client.getJson(path(GetJson), json(GetJson));
        m_client.postMultipart(path(PostMultipart), {{u"a"_s, 1}}, {{u"file"_s, u"in.kvt"_s, "bytes"}},
                               bytes(PostMultipart));
        m_client.downloadFile(m_client.url(path(DownloadFile)), bytes(DownloadFile));
    }

    JsonCallback json(Primitive primitive)
    {
        return [this, primitive](const QJsonObject &object, const QString &error) {
            note(primitive, {}, object, error);
        };
    }

    BytesCallback bytes(Primitive primitive)
    {
        return [this, primitive](const QByteArray &body, const QJsonObject &object, const QString &error) {
            note(primitive, body, object, error);
        };
    }

    void note(Primitive primitive, const QByteArray &body, const QJsonObject &object, const QString &error)
    {
        Outcome &outcome = m_outcomes[primitive];
        outcome = {outcome.calls + 1, body, object, error};
        ++m_calls;
    }

    void expectCalledOnce() const
    {
        for (const Outcome &outcome : m_outcomes)
            FUZZ_EXPECT(outcome.calls == 1);
        FUZZ_EXPECT(m_client.findChildren<QNetworkAccessManager *>().isEmpty());
        FUZZ_EXPECT(m_client.findChildren<QNetworkReply *>().isEmpty());
    }

    // How each kind of request handles an answer.
    void expectAgreement() const
    {
        const Outcome &form = m_outcomes[PostMultipart];
        FUZZ_EXPECT(form.object == jsonObjectFromBody(form.bytes).value_or(QJsonObject()));
        FUZZ_EXPECT(m_outcomes[DownloadFile].object.isEmpty());
        const WorkerResult worker = classifyWorkerAnswer(form.bytes, form.object, form.error);
        FUZZ_EXPECT(worker.ok == worker.error.isEmpty());
        // A body comes out no longer than it came, unless it was compressed.
        if (!m_answer.toLower().contains("encoding")) {
            for (const Outcome &outcome : m_outcomes)
                FUZZ_EXPECT(outcome.bytes.size() <= m_answer.size());
        }
    }

    // A ticket opened or credits spent twice would be the price. Only an answer that sends the client
    // elsewhere makes it ask again.
    void expectSentOnce() const
    {
        if (m_answer.toLower().contains("location"))
            return;
        for (const Primitive primitive : {PostJson, PostMultipart})
            FUZZ_EXPECT(requestsFor(primitive) == 1);
        FUZZ_EXPECT(requestsFor(GetJson) >= 1 && requestsFor(DownloadFile) >= 1);
    }

    int requestsFor(Primitive primitive) const
    {
        const QByteArray target = QByteArray(" /api/") + paths[primitive] + ' ';
        int count = 0;
        for (int i = 0; i < m_server.requestCount(); ++i)
            count += m_server.request(i).requestLine().contains(target) ? 1 : 0;
        return count;
    }

    const QByteArray m_answer;
    RawHttpServer m_server;
    VoxApiClient m_client;
    std::array<Outcome, PrimitiveCount> m_outcomes;
    int m_calls = 0;
};

// Whether a chunked body stops in the midst of the line that gives a chunk's size, or has an empty one there.
// Qt takes any two bytes after a chunk.
bool endsWithinASize(const QByteArray &body)
{
    qsizetype at = 0;
    while (at <= body.size()) {
        const qsizetype end = body.indexOf("\r\n", at);
        if (end < 0)
            return body.size() - at >= 2;
        const QByteArray line = body.sliced(at, end - at);
        if (line.trimmed().isEmpty())
            return true;
        const int size = line.split(';').constFirst().trimmed().toInt(nullptr, 16);
        if (size <= 0)
            return false;
        at = end + 2 + size + 2;
    }
    return false;
}

// Qt (seen in 6.4) never reports a closed connection after it stopped in the middle of a chunked body: within
// a chunk size, at an empty or negative one, at a line that does not end in CR LF, and before the very last
// line break.
bool isNeverAnswered(const QByteArray &answer)
{
    const qsizetype chunked = answer.toLower().indexOf("chunked");
    if (chunked < 0)
        return false;
    const qsizetype head = answer.indexOf("\r\n\r\n", chunked);
    if (head >= 0 && endsWithinASize(answer.sliced(head + 4)))
        return true;
    const QByteArray body = answer.sliced(chunked);
    const qsizetype breaks = body.count("\r\n");
    const QList<QByteArray> lines = body.split('\n');
    return body.count('\r') != breaks || body.count('\n') != breaks
        || (body.endsWith("\r\n") && !body.endsWith("\r\n\r\n"))
        || std::any_of(lines.begin(), lines.end(),
                       [](const QByteArray &line) { return line.trimmed().startsWith('-'); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray answer = FuzzInput(data, size).takeRest();
    if (!isNeverAnswered(answer))
        Exchange(answer).run();
    return 0;
}
