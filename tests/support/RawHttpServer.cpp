#include "support/RawHttpServer.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype endlessChunk = 64 * 1024;

qint64 announcedLength(const RecordedRequest &request)
{
    return request.header("content-length").toLongLong();
}

} // namespace

QByteArray RecordedRequest::requestLine() const
{
    return head.left(head.indexOf("\r\n"));
}

QList<std::pair<QByteArray, QByteArray>> RecordedRequest::headers() const
{
    QList<std::pair<QByteArray, QByteArray>> result;
    const QByteArrayList lines = head.split('\n').mid(1);
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0) {
            result.append({line.left(colon), line.mid(colon + 1).trimmed()});
        }
    }
    return result;
}

QByteArrayList RecordedRequest::headerNames() const
{
    QByteArrayList names;
    const auto pairs = headers();
    for (const auto &pair : pairs) {
        names.append(pair.first.toLower());
    }
    std::sort(names.begin(), names.end());
    return names;
}

QByteArray RecordedRequest::header(const QByteArray &name) const
{
    const auto pairs = headers();
    const auto found = std::find_if(pairs.begin(), pairs.end(), [&name](const auto &pair) {
        return pair.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == pairs.end() ? QByteArray() : found->second;
}

QByteArray httpAnswer(int status, const QByteArray &body, const QByteArray &headerLines)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Test\r\n" + headerLines
        + "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

RawAnswer answerWith(const QByteArray &body)
{
    return {httpAnswer(200, body)};
}

RawAnswer holdRequest()
{
    return {{}, RawAnswer::Ending::KeepOpen};
}

quint16 closedPort()
{
    // Stays bound for the life of the process, so that nothing else can listen there.
    static const QTcpSocket *const bound = [] {
        auto *const socket = new QTcpSocket(QCoreApplication::instance());
        socket->bind(QHostAddress::LocalHost, 0, QAbstractSocket::DontShareAddress);
        return socket;
    }();
    return bound->localPort();
}

RawHttpServer::RawHttpServer(QObject *parent)
    : RawHttpServer(new QTcpServer, parent)
{
}

RawHttpServer::RawHttpServer(const QSslConfiguration &tls)
    : RawHttpServer(new QSslServer, nullptr)
{
    qobject_cast<QSslServer *>(m_server)->setSslConfiguration(tls);
    // pendingConnectionAvailable() is emitted only after the TLS handshake.
    connect(m_server, &QTcpServer::pendingConnectionAvailable, this, &RawHttpServer::accept);
}

RawHttpServer::RawHttpServer(QTcpServer *server, QObject *parent)
    : QObject(parent)
    , m_server(server)
    , m_always(answerWith("{}"))
{
    m_server->setParent(this);
    connect(m_server, &QTcpServer::newConnection, this, &RawHttpServer::accept);
    if (!m_server->listen(QHostAddress::LocalHost)) {
        qFatal("No loopback port to listen on: %s", qPrintable(m_server->errorString()));
    }
}

RawHttpServer::~RawHttpServer()
{
    const QList<QTcpSocket *> sockets = m_connections.keys();
    for (QTcpSocket *socket : sockets) {
        socket->disconnect(this);
        socket->abort();
    }
}

quint16 RawHttpServer::port() const
{
    return m_server->serverPort();
}

QString RawHttpServer::baseUrl() const
{
    const bool usesTls = qobject_cast<QSslServer *>(m_server);
    return u"%1://127.0.0.1:%2/api/"_s.arg(usesTls ? u"https"_s : u"http"_s).arg(port());
}

void RawHttpServer::answerAlways(const RawAnswer &answer)
{
    m_always = answer;
}

void RawHttpServer::answerNext(const RawAnswer &answer)
{
    m_queue.append(answer);
}

void RawHttpServer::answerHeld(int request, const RawAnswer &answer)
{
    if (QTcpSocket *socket = m_requestSockets.value(request)) {
        act(socket, answer);
    }
}

int RawHttpServer::completeRequestCount() const
{
    return static_cast<int>(std::count_if(m_requests.begin(), m_requests.end(),
                                          [](const RecordedRequest &request) { return request.complete; }));
}

void RawHttpServer::accept()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        ++m_connectionCount;
        m_connections.insert(socket, {});
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            const Connection gone = m_connections.take(socket);
            if (gone.request < 0)
                m_strayBytes += gone.unread;
            socket->deleteLater();
        });
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        if (nextAnswer().moment == RawAnswer::Moment::OnConnect)
            answerAtOnce(socket);
        read(socket);
    }
}

// Takes any bytes, even if they are not a request.
void RawHttpServer::answerAtOnce(QTcpSocket *socket)
{
    m_connections[socket].answered = true;
    act(socket, takeAnswer());
}

void RawHttpServer::read(QTcpSocket *socket)
{
    if (!m_connections.contains(socket)) {
        return;
    }
    m_connections[socket].unread += socket->readAll();
    const Connection &came = m_connections[socket];
    if (!came.answered && came.request < 0 && !came.unread.isEmpty()
        && nextAnswer().moment == RawAnswer::Moment::OnFirstBytes) {
        answerAtOnce(socket);
        if (!m_connections.contains(socket))
            return;
    }
    Connection &connection = m_connections[socket];
    if (connection.request < 0) {
        const qsizetype headEnd = connection.unread.indexOf("\r\n\r\n");
        if (headEnd < 0) {
            return;
        }
        startRequest(socket, connection, headEnd + 4);
        if (!connection.answered && connection.answer.moment == RawAnswer::Moment::AfterHead) {
            act(socket, RawAnswer(connection.answer));
            return;
        }
    }
    RecordedRequest &request = m_requests[connection.request];
    const QByteArray piece = connection.unread.left(connection.missing);
    request.body += piece;
    connection.unread.remove(0, piece.size());
    connection.missing -= piece.size();
    if (connection.missing > 0 || request.complete) {
        return;
    }
    request.complete = true;
    connection.request = -1;
    if (!connection.answered) {
        const RawAnswer answer = connection.answer;
        act(socket, answer);
    }
    emit requestArrived();
}

void RawHttpServer::startRequest(QTcpSocket *socket, Connection &connection, qsizetype headEnd)
{
    RecordedRequest request;
    request.head = connection.unread.left(headEnd);
    connection.unread.remove(0, headEnd);
    connection.missing = announcedLength(request);
    connection.request = requestCount();
    if (!connection.answered)
        connection.answer = takeAnswer();
    m_requests.append(request);
    m_requestSockets.append(socket);
}

RawAnswer RawHttpServer::takeAnswer()
{
    return m_queue.isEmpty() ? m_always : m_queue.takeFirst();
}

void RawHttpServer::act(QTcpSocket *socket, const RawAnswer &answer)
{
    socket->write(answer.bytes);
    if (answer.endless) {
        connect(socket, &QTcpSocket::bytesWritten, this, [this, socket](qint64 count) {
            m_endlessBytes += count;
            feedEndless(socket);
        });
        feedEndless(socket);
        return;
    }
    socket->flush();
    if (answer.ending == RawAnswer::Ending::Reset) {
        reset(socket);
    } else if (answer.ending == RawAnswer::Ending::Close) {
        if (answer.moment == RawAnswer::Moment::OnConnect || answer.moment == RawAnswer::Moment::OnFirstBytes)
            closeForWriting(socket);
        else
            socket->disconnectFromHost();
    }
}

// The peer sees the connection closed, but what it still sends is counted.
void RawHttpServer::closeForWriting(QTcpSocket *socket)
{
    ::shutdown(static_cast<int>(socket->socketDescriptor()), SHUT_WR);
}

void RawHttpServer::reset(QTcpSocket *socket)
{
    // Closing a socket with a linger time of 0 sends a reset.
    const linger noTime{1, 0};
    ::setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &noTime, sizeof noTime);
    socket->abort();
}

void RawHttpServer::feedEndless(QTcpSocket *socket)
{
    if (socket->bytesToWrite() < endlessChunk) {
        socket->write(QByteArray(endlessChunk, '\0'));
    }
}
