#include "platform/LocalWorker.h"

using namespace Qt::StringLiterals;

namespace {

LocalRunResult refused()
{
    LocalRunResult result;
    result.message = u"This build performs all work through the VOX API."_s;
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
