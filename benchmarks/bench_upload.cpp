// The real program while it sends a file, first at rest, then while a list of 100,000 rows scrolls with every
// frame: Qt asks the window's thread for each piece of a body. Prints the milliseconds of both, on one line.
//   BENCH_FILE=/absolute/path BENCH_API=https://HOST/api/ bench_upload

#include "Authority.h"
#include "RealWindow.h"

#include "api/VoxApiClient.h"
#include "core/FileTools.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int rowCount = 100'000;

class Bench : public QObject
{
public:
    explicit Bench(QQuickWindow *window)
        : QObject(window)
        , m_window(window)
        , m_client(controllerOf(window)->findChild<VoxApiClient *>())
        , m_file(FileTools::readFile(qEnvironmentVariable("BENCH_FILE")))
    {
        if (m_file.isEmpty())
            giveUp("bench_upload: BENCH_FILE names no file");
        // A display in memory would take frames without a pause.
        m_frames.setInterval(16);
        m_frames.setTimerType(Qt::PreciseTimer);
        connect(&m_frames, &QTimer::timeout, this, &Bench::scroll);
        m_client->setApiBase(qEnvironmentVariable("BENCH_API"));
        controllerOf(window)->setTab(u"stock"_s);
        afterNextFrame(window, [this] { fill(); });
    }

private:
    void fill()
    {
        m_list = findItem(m_window->contentItem(), u"stockList"_s);
        auto *const model = m_list ? m_list->property("model").value<QObject *>() : nullptr;
        if (!model)
            giveUp("bench_upload: there is no list");
        QVariantList rows;
        for (int i = 0; i < rowCount; ++i) {
            const QString number = QString::number(i);
            rows.append(QVariantMap{{u"filename"_s, u"file%1.kvt"_s.arg(number)},
                                    {u"os"_s, number},
                                    {u"module"_s, u"E38"_s},
                                    {u"year"_s, u"2015"_s},
                                    {u"make"_s, u"A"_s},
                                    {u"model"_s, u"B"_s}});
        }
        if (!model->setProperty("rows", rows))
            giveUp("bench_upload: the list takes no rows");
        afterNextFrame(m_window, [this] { send(); });
    }

    void send()
    {
        m_timer.start();
        const auto answered = [this](const WorkerResult &result) {
            if (!result.isJson)
                giveUp(qUtf8Printable(u"bench_upload: "_s + result.error));
            std::printf(m_isScrolling ? "%lld\n" : "%lld ", static_cast<long long>(m_timer.elapsed()));
            if (m_isScrolling)
                return QCoreApplication::quit();
            m_isScrolling = true;
            m_frames.start();
            send();
        };
        m_client->kvtWorker(u"4.0.2"_s, u"kvt_info"_s, {}, {{u"file"_s, u"sample.kvt"_s, m_file}}, answered);
    }

    void scroll() { m_list->setProperty("contentY", m_list->property("contentY").toReal() + 40); }

    QQuickWindow *m_window;
    VoxApiClient *m_client;
    QByteArray m_file;
    QQuickItem *m_list = nullptr;
    QElapsedTimer m_timer;
    QTimer m_frames;
    bool m_isScrolling = false;
};

void beginWithProgram()
{
    trustAuthority();
    QTimer::singleShot(0, QCoreApplication::instance(),
                       [] { whenStarted([](QQuickWindow *window) { new Bench(window); }); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWithProgram)
