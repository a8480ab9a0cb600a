#pragma once

#include <QString>
#include <QStringList>

/// What a local conversion program would answer.
struct LocalRunResult
{
    bool ok = false;
    int exitCode = -1;
    QString output;
    QString errorOutput;
    QString message;
};

/// Placeholder for a local conversion program. There is none: the service converts, and nothing runs here.
class LocalWorker
{
public:
    LocalWorker() = delete;

    static bool available();
    static QString cliPath();
    static LocalRunResult run(const QStringList &arguments, int timeoutMs);
    static LocalRunResult convert(const QStringList &arguments);
};
