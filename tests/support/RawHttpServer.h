#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <utility>

class QSslConfiguration;
class QTcpServer;
class QTcpSocket;

/// One request as received. `complete` once the whole announced body has arrived.
struct RecordedRequest
{
    QByteArray head;
    QByteArray body;
    bool complete = false;

    QByteArray requestLine() const;
    /// In wire order, values trimmed.
    QList<std::pair<QByteArray, QByteArray>> headers() const;
    /// In lower case, sorted, with duplicates.
    QByteArrayList headerNames() const;
    /// The first header of that name in any case, or an empty array.
    QByteArray header(const QByteArray &name) const;
};

/// What the server does with one request.
struct RawAnswer
{
    enum class Moment
    {
        OnConnect,
        OnFirstBytes,
        AfterHead,
        AfterRequest
    };
    enum class Ending
    {
        KeepOpen,
        Close,
        Reset
    };

    /// Sent as they are, well-formed or not.
    QByteArray bytes;
    Ending ending = Ending::Close;
    Moment moment = Moment::AfterRequest;
    /// After `bytes`, sends zeros for as long as the peer accepts them.
    bool endless = false;
};

/// A complete answer: status line, the given header lines, a content length and the body.
QByteArray httpAnswer(int status, const QByteArray &body,
                      const QByteArray &headerLines = "Content-Type: text/plain\r\n");
RawAnswer answerWith(const QByteArray &body);
/// Takes the request and never answers.
RawAnswer holdRequest();
/// A loopback port at which nothing listens.
quint16 closedPort();

/// A server on a loopback port that sends exactly the given bytes, well-formed or not, and records what it
/// receives. Lives in the thread of the test.
class RawHttpServer : public QObject
{
    Q_OBJECT

public:
    explicit RawHttpServer(QObject *parent = nullptr);
    explicit RawHttpServer(const QSslConfiguration &tls);
    ~RawHttpServer() override;

    quint16 port() const;
    /// Base address of an API on this server, ending in "/api/".
    QString baseUrl() const;

    /// For requests without a queued answer. A plain "{}" by default.
    void answerAlways(const RawAnswer &answer);
    /// Queued, each for one request in order of arrival.
    void answerNext(const RawAnswer &answer);
    /// Answers a held request; they are numbered in order of arrival.
    void answerHeld(int request, const RawAnswer &answer);

    int connectionCount() const { return m_connectionCount; }
    /// Requests whose header arrived, even on a connection that was answered early, unless it was reset.
    int requestCount() const { return static_cast<int>(m_requests.size()); }
    int completeRequestCount() const;
    RecordedRequest request(int index) const { return m_requests.value(index); }
    /// What closed connections sent without a complete header.
    QByteArray strayBytes() const { return m_strayBytes; }
    /// Bytes of endless bodies sent so far.
    qint64 endlessBytes() const { return m_endlessBytes; }

signals:
    void requestArrived();

private:
    struct Connection
    {
        QByteArray unread;
        /// Index into the requests, or -1 between two of them.
        int request = -1;
        qint64 missing = 0;
        RawAnswer answer;
        /// Nothing more is sent here.
        bool answered = false;
    };

    RawHttpServer(QTcpServer *server, QObject *parent);
    void accept();
    const RawAnswer &nextAnswer() const { return m_queue.isEmpty() ? m_always : m_queue.first(); }
    void answerAtOnce(QTcpSocket *socket);
    void read(QTcpSocket *socket);
    void startRequest(QTcpSocket *socket, Connection &connection, qsizetype headEnd);
    void act(QTcpSocket *socket, const RawAnswer &answer);
    static void reset(QTcpSocket *socket);
    static void closeForWriting(QTcpSocket *socket);
    void feedEndless(QTcpSocket *socket);
    RawAnswer takeAnswer();

    QTcpServer *m_server;
    QHash<QTcpSocket *, Connection> m_connections;
    QList<RecordedRequest> m_requests;
    QList<QPointer<QTcpSocket>> m_requestSockets;
    QList<RawAnswer> m_queue;
    RawAnswer m_always;
    int m_connectionCount = 0;
    QByteArray m_strayBytes;
    qint64 m_endlessBytes = 0;
};
