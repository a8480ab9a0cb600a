#include "api/UpdateCheck.h"

#include "api/JsonReading.h"

#include <QStringList>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

bool isNewerVersion(const QString &latest, const QString &current)
{
    const QStringList ours = current.split('.'_L1);
    const QStringList theirs = latest.split('.'_L1);
    const qsizetype count = std::max(ours.size(), theirs.size());
    for (qsizetype i = 0; i < count; ++i) {
        const int our = ours.value(i).toInt();
        const int their = theirs.value(i).toInt();
        if (our != their)
            return their > our;
    }
    return false;
}

bool isWebAddress(const QString &link)
{
    const QUrl url(link, QUrl::TolerantMode);
    return url.isValid() && !url.host().isEmpty()
        && (url.scheme() == "https"_L1 || url.scheme() == "http"_L1);
}

UpdateOutcome decodeUpdateAnswer(const QJsonObject &answer, const QString &current)
{
    const QString latest = jsonString(answer, u"latest_version"_s);
    const QString link = jsonString(answer, u"download_url"_s);
    if (latest.isEmpty())
        return {u"Update check: the server did not report a version."_s, 0, {}};
    if (!isNewerVersion(latest, current))
        return {u"You are running the latest version (%1)."_s.arg(current), 1, {}};
    if (!isWebAddress(link)) {
        return {u"Update %1 is available but no download link was provided."_s.arg(latest), 0, {}};
    }
    return {u"Version %1 is available. Opening the download..."_s.arg(latest), 1, link};
}
