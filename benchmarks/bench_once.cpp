// Does one piece of work and prints how many milliseconds it took; compare.sh runs it beside public tools.
//   bench_once scan ROOT NAME-FILTER LIMIT
//   bench_once sort DESTINATION SOURCE-FOLDER

#include "core/FileTools.h"

#include <QDir>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QFile::decodeName(argv[i]));
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
    } else {
        std::fprintf(stderr, "bench_once: unknown work\n");
        return 1;
    }
    std::printf("%.2f %lld\n", static_cast<double>(timer.nsecsElapsed()) / 1e6,
                static_cast<long long>(count));
    return 0;
}
