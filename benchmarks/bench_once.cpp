// Does one piece of work and prints how many milliseconds it took; compare.sh runs it beside public tools.
//   bench_once scan ROOT NAME-FILTER LIMIT
//   bench_once sort DESTINATION SOURCE-FOLDER
//   bench_once upload API-BASE FILE

#include "api/VoxApiClient.h"
#include "core/FileTools.h"
#include "core/Version.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

namespace {

// Reads a file and sends it as opening does; true when the service answered at all.
bool upload(const QString &apiBase, const QString &path)
{
    VoxApiClient client;
    client.setApiBase(apiBase);
    bool answered = false;
    client.kvtWorker(applicationVersion(), QStringLiteral("kvt_info"), {},
                     {{QStringLiteral("file"), QFileInfo(path).fileName(), FileTools::readFile(path)}},
                     [&answered](const WorkerResult &result) {
                         answered = result.isJson;
                         QCoreApplication::quit();
                     });
    QCoreApplication::exec();
    return answered;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
    const QCoreApplication app(argc, argv);
    QElapsedTimer timer;
    qsizetype count = 0;
    if (arguments.value(0) == QLatin1String("scan")) {
        timer.start();
        count = FileTools::scanCalFolder(arguments.value(1), true, arguments.value(2), {}, {}, {},
                                         arguments.value(3).toInt(), nullptr)
                    .size();
    } else if (arguments.value(0) == QLatin1String("sort")) {
        QStringList files;
        for (const QFileInfo &file : QDir(arguments.value(2)).entryInfoList(QDir::Files))
            files.append(file.filePath());
        timer.start();
        count = FileTools::sortCopyKvt(files, arguments.value(1), {});
    } else if (arguments.value(0) == QLatin1String("upload")) {
        timer.start();
        count = upload(arguments.value(1), arguments.value(2)) ? 1 : 0;
        if (count == 0) {
            std::fprintf(stderr, "bench_once: the upload failed\n");
            return 1;
        }
    } else {
        std::fprintf(stderr, "bench_once: unknown work\n");
        return 1;
    }
    std::printf("%.2f %lld\n", static_cast<double>(timer.nsecsElapsed()) / 1e6,
                static_cast<long long>(count));
    return 0;
}
