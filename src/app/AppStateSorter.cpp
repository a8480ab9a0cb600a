#include "app/AppState.h"

#include "core/FileTools.h"

using namespace Qt::StringLiterals;

void AppState::sortCopy(const QStringList &files, const QString &dest, const QString &order)
{
    QString error;
    const int copied = FileTools::sortCopyKvt(files, dest, order, &error);
    if (failed(error))
        return;
    setStatus(u"Copied %1 of %2 file(s)."_s.arg(copied).arg(files.size()), copied > 0 ? 1 : 0);
}
