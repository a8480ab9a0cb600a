// The real program with answers of many items: how long from an answer's arrival until the window is drawn
// with its list, and how much of that the program computed. The answers come from a server in the program
// itself. Prints one line for each list: its name, milliseconds, and milliseconds computed, with tabs
// between.
//   BENCH_ITEMS=100000 bench_items

#include "RealWindow.h"

#include "api/VoxApiClient.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct List
{
    const char *name;
    const char *tab;
    // The item that holds the list, and the list in it, if it is not that item itself.
    const char *holder;
    const char *list;
    // Where the items stand in the answer, and what one of them is; %1 is its number.
    const char *key;
    const char *item;
    void (*ask)(AppState *state, const QString &tuneFile);
};

const List lists[] = {
    {"modules", "main", "moduleList", "lines", "modules",
     R"({"title":"Module %1","vin":"VIN%1","serial":"S%1","mainOs":"OS%1","labels":["A","B"],"values":["%1","2"]})",
     [](AppState *state, const QString &file) { state->openKvt(file); }},
    {"candidates", "segments", "swapList", nullptr, "candidates",
     R"({"label":"Candidate %1","targetIndex":1,"donorIndex":2})",
     [](AppState *state, const QString &file) {
         state->pickSegmentFile(u"base"_s, file);
         state->pickSegmentFile(u"donor"_s, file);
         state->previewSegments();
     }},
    {"catalogue", "xdf", "xdfList", nullptr, "items",
     R"({"id":"%1","title":"Item %1","os_id":"126%1","credits":1})",
     [](AppState *state, const QString &) { state->xdfCatalog(); }},
    {"patches", "patcher", "patcherList", nullptr, "patches",
     R"({"id":%1,"variant":"Variant %1","description":"Text of patch %1","credits_cost":1})",
     [](AppState *state, const QString &) { state->loadPatches(u"12650000"_s); }},
    {"stock files", "stock", "stockList", nullptr, "files",
     R"({"id":"%1","filename":"file%1.kvt","os":"126%1","module":"E38","year":"2015","make":"A","model":"B"})",
     [](AppState *state, const QString &) { state->stockSearch({}); }},
    {"conversation", "feedback", "ticketLog", "lines", "messages", R"({"from":"dev","text":"Message %1"})",
     [](AppState *state, const QString &) { state->loadTicket(u"T1"_s); }},
};

QByteArray answerWith(const List &list, int count)
{
    const QString item = QString::fromLatin1(list.item);
    QByteArray body = "{\"status\":\"ok\",\"ok\":true,\""_ba + list.key + "\":[";
    for (int i = 0; i < count; ++i)
        body += (i == 0 ? QByteArray() : ","_ba) + item.arg(i).toUtf8();
    body += "]}";
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

class Bench : public QObject
{
public:
    explicit Bench(QQuickWindow *window)
        : QObject(window)
        , m_window(window)
        , m_state(controllerOf(window))
        , m_client(m_state->findChild<VoxApiClient *>())
        , m_count(qEnvironmentVariableIntValue("BENCH_ITEMS"))
    {
        if (m_count <= 0)
            giveUp("bench_items: BENCH_ITEMS is not a number");
        if (!m_server.listen(QHostAddress::LocalHost))
            giveUp("bench_items: no server");
        m_client->setApiBase(u"http://127.0.0.1:%1/"_s.arg(m_server.serverPort()));
        connect(&m_server, &QTcpServer::newConnection, this, &Bench::serve);
        connect(m_window, &QQuickWindow::frameSwapped, this, &Bench::look, Qt::QueuedConnection);
        QFile file(tuneFile());
        if (!file.open(QIODevice::WriteOnly) || file.write("bytes") != 5)
            giveUp("bench_items: cannot write the sample");
        next();
    }

private:
    QString tuneFile() const { return m_folder.filePath(u"sample.kvt"_s); }
    const List &list() const { return lists[m_index]; }

    void next()
    {
        m_arrived = false;
        m_answer = answerWith(list(), m_count);
        m_state->setTab(QString::fromLatin1(list().tab));
        afterNextFrame(m_window, [this] { ask(); });
    }

    void ask()
    {
        list().ask(m_state, tuneFile());
        for (QNetworkAccessManager *const manager : m_client->findChildren<QNetworkAccessManager *>()) {
            // Told before the client is: its callback counts in full.
            connect(manager, &QNetworkAccessManager::finished, this, [this] {
                m_arrived = true;
                m_timer.start();
                m_computedBefore = computedMilliseconds();
            });
        }
    }

    // Once the whole request is there; every one has a body with its length.
    void serve()
    {
        QTcpSocket *const socket = m_server.nextPendingConnection();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const QByteArray request = socket->peek(socket->bytesAvailable());
            const qsizetype head = request.indexOf("\r\n\r\n");
            const qsizetype field = request.toLower().indexOf("content-length:");
            const qsizetype length = field < 0 || field > head
                ? 0
                : request.mid(field + 15, request.indexOf("\r\n", field) - field - 15).trimmed().toLongLong();
            if (head < 0 || request.size() < head + 4 + length)
                return;
            socket->readAll();
            socket->write(m_answer);
            socket->disconnectFromHost();
        });
    }

    // A frame was drawn: with the rows?
    void look()
    {
        if (!m_arrived)
            return;
        const QQuickItem *view = findItem(m_window->contentItem(), QString::fromLatin1(list().holder));
        if (view && list().list)
            view = findItem(view, QString::fromLatin1(list().list));
        if (!view || view->property("count").toInt() < m_count)
            return;
        std::printf("%s\t%lld\t%.0f\n", list().name, static_cast<long long>(m_timer.elapsed()),
                    computedMilliseconds() - m_computedBefore);
        if (++m_index == std::size(lists))
            QCoreApplication::quit();
        else
            QTimer::singleShot(0, this, &Bench::next);
        m_arrived = false;
    }

    QQuickWindow *m_window;
    AppState *m_state;
    VoxApiClient *m_client;
    QTcpServer m_server;
    QTemporaryDir m_folder;
    QByteArray m_answer;
    QElapsedTimer m_timer;
    double m_computedBefore = 0;
    std::size_t m_index = 0;
    int m_count;
    bool m_arrived = false;
};

void beginWithProgram()
{
    QTimer::singleShot(0, QCoreApplication::instance(),
                       [] { whenShown([](QQuickWindow *window) { new Bench(window); }); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWithProgram)
