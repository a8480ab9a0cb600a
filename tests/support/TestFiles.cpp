#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

QString makeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.flush())
        qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
    return path;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    return file.readAll();
}
