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

// Opened for each line, so that a crash loses none. Every user can write to the temporary folder.
void append(QByteArrayView text)
{
    // A warning from Qt about the log would wait for the lock that is held here.
    const QScopedValueRollback<bool> writing(isWriting, true);
    const QString folder = QDir::tempPath();
    // The path is empty if there is no temporary folder; the log must not go to the working folder.
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
