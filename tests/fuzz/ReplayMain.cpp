#include "FuzzSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdio>
#include <vector>

// Runs a target on files: every file of the folders, and the single files, that the command line names. A
// broken expectation ends the program; the last name printed is then the file's.

namespace {

QStringList filesOf(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return {path};
    QStringList files;
    const QFileInfoList entries = QDir(path).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo &entry : entries)
        files.append(entry.filePath());
    return files;
}

bool replay(const QString &path)
{
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
        return false;
    }
    // No byte more than the input, so that an address sanitizer sees reading past its end.
    const QByteArray bytes = file.readAll();
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList files = filesOf(QFile::decodeName(argv[i]));
        for (const QString &file : files) {
            if (!replay(file))
                return EXIT_FAILURE;
            ++replayed;
        }
    }
    std::printf("%d input(s) replayed\n", replayed);
    return replayed > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
