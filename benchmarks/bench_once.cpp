// Does one piece of work and prints how many milliseconds it took; compare.sh runs it beside public tools.
//   bench_once scan ROOT NAME-FILTER LIMIT
//   bench_once sort DESTINATION SOURCE-FOLDER
//   bench_once upload API-BASE FILE
//   bench_once download URL BYTES
//                         The last two also print the process's peak in MiB, and trust the certificate in the
//                         file BENCH_AUTHORITY.
//   bench_once find zeros|noise|crowded-noise|two-values NEEDLE-LENGTH REPEATS
//                         The editor's search, and the C library's memchr for a byte that is nowhere, in
//                         turn, a line for each repeat.
//   bench_once count zeros|noise NEEDLE-LENGTH REPEATS
//                         All matches counted by the editor, and by memmem from each match on.
//   bench_once compare FILE OTHER
//                         From the command to the differences, with FILE open.
//   bench_once undo STEPS  Undoes as many changes of 256 MiB.

#include "Authority.h"
#include "Haystack.h"
#include "api/VoxApiClient.h"
#include "app/AppState.h"
#include "app/HexEditing.h"
#include "core/FileTools.h"
#include "core/HexCompare.h"
#include "core/HexModel.h"
#include "core/MatchCount.h"
#include "core/Version.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sys/resource.h>
#include <time.h>

using namespace Qt::StringLiterals;

namespace {

int fail(const char *reason)
{
    std::fprintf(stderr, "bench_once: %s\n", reason);
    return 1;
}

// The time and the most memory that the process has had.
void printTransfer(const QElapsedTimer &timer)
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%.2f %.1f\n", static_cast<double>(timer.nsecsElapsed()) / 1e6,
                static_cast<double>(usage.ru_maxrss) / 1024);
}

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

int scan(const QStringList &arguments)
{
    QElapsedTimer timer;
    timer.start();
    const QVariantList hits = FileTools::scanCalFolder(arguments.at(0), true, arguments.at(1), {}, {}, {},
                                                       arguments.at(2).toInt(), nullptr);
    const double elapsed = milliseconds(timer);
    std::printf("%.2f\n", elapsed);
    return hits.isEmpty() ? fail("the scan found nothing") : 0;
}

int sort(const QStringList &arguments)
{
    QStringList files;
    for (const QFileInfo &file : QDir(arguments.at(1)).entryInfoList(QDir::Files))
        files.append(file.filePath());
    QElapsedTimer timer;
    timer.start();
    const int copied = FileTools::sortCopyKvt(files, arguments.at(0), {});
    std::printf("%.2f\n", milliseconds(timer));
    return copied == files.size() ? 0 : fail("not every file was copied");
}

// Reads a file and sends it as opening does.
int upload(const QStringList &arguments)
{
    QElapsedTimer timer;
    timer.start();
    VoxApiClient client;
    client.setApiBase(arguments.at(0));
    bool answered = false;
    client.kvtWorker(
        applicationVersion(), u"kvt_info"_s, {},
        {{u"file"_s, QFileInfo(arguments.at(1)).fileName(), FileTools::readFile(arguments.at(1))}},
        [&answered](const WorkerResult &result) {
            answered = result.isJson;
            QCoreApplication::quit();
        });
    QCoreApplication::exec();
    printTransfer(timer);
    return answered ? 0 : fail("the upload failed");
}

int download(const QStringList &arguments)
{
    QElapsedTimer timer;
    timer.start();
    VoxApiClient client;
    QString fault;
    client.downloadFile(
        arguments.at(0), [&](const QByteArray &bytes, const QJsonObject &, const QString &error) {
            fault = bytes.size() == arguments.at(1).toLongLong() ? error : u"not the whole file: "_s + error;
            QCoreApplication::quit();
        });
    QCoreApplication::exec();
    printTransfer(timer);
    return fault.isEmpty() ? 0 : fail(qUtf8Printable(fault));
}

// Neither search waits for anything, so what others do on the machine need not be in the figure.
double processorMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

int find(const QStringList &arguments)
{
    struct Data
    {
        const char *name;
        QByteArray (*haystack)();
        QByteArray (*needle)(qsizetype length);
        char absent;
    };
    constexpr Data all[] = {
        {"noise", Haystack::noise, Haystack::absentFromNoise, '\xff'},
        {"zeros", Haystack::zeros, Haystack::absentFromZeros, '\x01'},
        {"crowded-noise", Haystack::noise, Haystack::crowdedInNoise, '\xff'},
        {"two-values", Haystack::twoValues, Haystack::crowdedInTwoValues, '\xff'},
    };
    const Data *const data = std::find_if(std::begin(all), std::end(all), [&arguments](const Data &one) {
        return arguments.at(0) == QLatin1StringView(one.name);
    });
    if (data == std::end(all))
        return fail("no such data");
    const QByteArray haystack = data->haystack();
    const QByteArray needle = data->needle(arguments.at(1).toInt());
    const QString query = QString::fromLatin1(needle.toHex(' '));
    AppState state;
    state.hexModel()->setBytes(haystack);
    for (int repeat = arguments.at(2).toInt(); repeat > 0; --repeat) {
        const double begin = processorMilliseconds();
        state.hexFind(query);
        const double between = processorMilliseconds();
        const void *const found =
            memchr(haystack.constData(), data->absent, static_cast<size_t>(haystack.size()));
        const double end = processorMilliseconds();
        if (state.status() != "Not found."_L1)
            return fail("the editor found what is not there");
        if (found)
            return fail("memchr found what is not there");
        std::printf("%.2f %.2f\n", between - begin, end - between);
    }
    return 0;
}

// A needle that is there: in zeros everywhere.
int count(const QStringList &arguments)
{
    const QByteArray haystack = arguments.at(0) == "zeros"_L1 ? Haystack::zeros() : Haystack::noise();
    const QByteArray needle = haystack.last(arguments.at(1).toInt());
    for (int repeat = arguments.at(2).toInt(); repeat > 0; --repeat) {
        const double begin = processorMilliseconds();
        const auto counted = MatchCount::of(haystack, needle);
        const double between = processorMilliseconds();
        int found = 0;
        const char *at = haystack.constData();
        const char *const end = at + haystack.size();
        while ((at = static_cast<const char *>(memmem(at, static_cast<size_t>(end - at), needle.constData(),
                                                      static_cast<size_t>(needle.size()))))) {
            ++found;
            ++at;
        }
        const double after = processorMilliseconds();
        if (counted->total() != found)
            return fail("the counts differ");
        std::printf("%.2f %.2f\n", between - begin, after - between);
    }
    return 0;
}

int compare(const QStringList &arguments)
{
    HexModel model;
    model.setBytes(FileTools::readFile(arguments.at(0)));
    HexCompare comparison(&model);
    QObject::connect(&comparison, &HexCompare::finished, QCoreApplication::instance(),
                     &QCoreApplication::quit);
    QObject::connect(&comparison, &HexCompare::failed, [] { QCoreApplication::exit(1); });
    QElapsedTimer timer;
    timer.start();
    comparison.start(arguments.at(1));
    const int failed = QCoreApplication::exec();
    std::printf("%.2f\n", milliseconds(timer));
    return failed ? fail("the other file could not be read") : 0;
}

int undo(const QStringList &arguments)
{
    const int steps = arguments.at(0).toInt();
    AppState state;
    state.hexModel()->setBytes(Haystack::zeros());
    for (int i = 0; i < steps; ++i) {
        state.hexModel()->setCursor(i * 2000);
        state.hexPatch(u"AA"_s);
    }
    QElapsedTimer timer;
    timer.start();
    while (state.hexEditing()->canUndo())
        state.hexEditing()->undo();
    std::printf("%.2f\n", milliseconds(timer));
    return state.hexModel()->bytes() == Haystack::zeros() ? 0 : fail("not everything was undone");
}

struct Work
{
    const char *name;
    int argumentCount;
    int (*run)(const QStringList &arguments);
};

constexpr Work works[] = {{"scan", 3, scan},         {"sort", 2, sort}, {"upload", 2, upload},
                          {"download", 2, download}, {"find", 3, find}, {"count", 3, count},
                          {"compare", 2, compare},   {"undo", 1, undo}};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    trustAuthority();
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
    const QString name = arguments.isEmpty() ? QString() : arguments.takeFirst();
    for (const Work &work : works) {
        if (name == QLatin1String(work.name) && arguments.size() == work.argumentCount)
            return work.run(arguments);
    }
    return fail("unknown work, or not its arguments");
}
