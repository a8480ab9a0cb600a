#include "app/MessageLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageLogContext>
#include <QMutex>
#include <QMutexLocker>
#include <QScopedValueRollback>

#ifndef KVTEDITOR_PORTABLE_FILES
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

struct Messages
{
    QMutex mutex;
    QStringList texts;
};

// Never destroyed: a thread may still report while the process ends.
Messages &messages()
{
    static auto *const instance = new Messages;
    return *instance;
}

thread_local bool isWriting = false;

// The temporary folder is everybody's. A pipe of that name would hold up the program's start, so nothing is
// waited for; a link would have another file written to, so none is followed; and only a regular file of the
// user's own is written to, which nobody else may read.
bool openLog(QFile &log)
{
    constexpr QIODevice::OpenMode mode = QIODevice::Append | QIODevice::Text;
#ifdef KVTEDITOR_PORTABLE_FILES
    const QFileInfo found(log);
    return !found.isSymLink() && (!found.exists() || found.isFile()) && log.open(mode)
        && log.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
#else
    const QByteArray name = QFile::encodeName(log.fileName());
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;
    constexpr mode_t ownOnly = S_IRUSR | S_IWUSR;
    int file = ::open(name.constData(), flags, ownOnly);
    while (file < 0 && errno == EINTR)
        file = ::open(name.constData(), flags, ownOnly);
    struct stat status;
    const auto isOwn = [&] {
        return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid()
            && ::fchmod(file, ownOnly) == 0;
    };
    if (file >= 0 && !isOwn()) {
        ::close(file);
        return false;
    }
    return file >= 0 && log.open(file, mode, QFileDevice::AutoCloseHandle);
#endif
}

// Opened for each line, so that a crash loses none that was written.
void append(QByteArrayView text)
{
    // What the framework says of a log that it cannot write would wait for the lock that is held here.
    const QScopedValueRollback<bool> writing(isWriting, true);
    const QString folder = QDir::tempPath();
    // A temporary folder that is gone is reported as an empty path, and the log must not land in the working
    // folder.
    if (folder.isEmpty())
        return;
    QFile log(QDir(folder).filePath(QStringLiteral("kvteditornew-qt.log")));
    if (openLog(log))
        log.write(text.toByteArray() + '\n');
}

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtDebugMsg)
        return;
    Messages &captured = messages();
    if (isWriting) {
        // This thread holds the lock already.
        captured.texts.append(text);
        return;
    }
    const QMutexLocker lock(&captured.mutex);
    captured.texts.append(text);
    append(text.toUtf8());
}

} // namespace

void logLine(QByteArrayView text)
{
    const QMutexLocker lock(&messages().mutex);
    append(text);
}

void installMessageLog()
{
    qInstallMessageHandler(handleMessage);
}

QStringList capturedMessages()
{
    Messages &captured = messages();
    const QMutexLocker lock(&captured.mutex);
    return captured.texts;
}

QString loadFailureText(const QStringList &messages)
{
    return QStringLiteral("The editor window failed to load.\n") + messages.join(QLatin1Char('\n'));
}
