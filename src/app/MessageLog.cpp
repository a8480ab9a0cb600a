#include "app/MessageLog.h"

#include "core/FileTools.h"

#include <QDir>
#include <QFile>
#include <QMessageLogContext>
#include <QMutex>
#include <QMutexLocker>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;

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

// Opened for each line, so that a crash loses none that was written. The temporary folder is everybody's.
void append(QByteArrayView text)
{
    // What Qt says of a log that it cannot write would wait for the lock that is held here.
    const QScopedValueRollback<bool> writing(isWriting, true);
    const QString folder = QDir::tempPath();
    // A temporary folder that is gone is reported as an empty path, and the log must not land in the working
    // folder.
    if (folder.isEmpty())
        return;
    QFile log(QDir(folder).filePath(u"kvteditornew-qt.log"_s));
    if (FileTools::openPrivateFile(log, QIODevice::Append | QIODevice::Text))
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
    return u"The editor window failed to load.\n"_s + messages.join('\n'_L1);
}
