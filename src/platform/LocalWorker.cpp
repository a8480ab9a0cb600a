#include "platform/LocalWorker.h"

namespace {

LocalRunResult refused()
{
    LocalRunResult result;
    result.message = QStringLiteral("This build performs all work through the VOX API.");
    return result;
}

} // namespace

bool LocalWorker::available()
{
    return false;
}

QString LocalWorker::cliPath()
{
    return {};
}

LocalRunResult LocalWorker::run(const QStringList &, int)
{
    return refused();
}

LocalRunResult LocalWorker::convert(const QStringList &)
{
    return refused();
}
