#include "api/UpdateCheck.h"

#include "api/JsonReading.h"

#include <QStringList>
#include <QUrl>

#include <algorithm>

bool isNewerVersion(const QString &latest, const QString &current)
{
    const QStringList ours = current.split(QLatin1Char('.'));
    const QStringList theirs = latest.split(QLatin1Char('.'));
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
        && (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

UpdateOutcome decodeUpdateAnswer(const QJsonObject &answer, const QString &current)
{
    const QString latest = jsonString(answer, QStringLiteral("latest_version"));
    const QString link = jsonString(answer, QStringLiteral("download_url"));
    if (latest.isEmpty())
        return {QStringLiteral("Update check: the server did not report a version."), 0, {}};
    if (!isNewerVersion(latest, current))
        return {QStringLiteral("You are running the latest version (%1).").arg(current), 1, {}};
    if (!isWebAddress(link)) {
        return {
            QStringLiteral("Update %1 is available but no download link was provided.").arg(latest), 0, {}};
    }
    return {QStringLiteral("Version %1 is available. Opening the download...").arg(latest), 1, link};
}
