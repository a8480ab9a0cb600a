#pragma once

#include <QJsonObject>
#include <QString>

/// What an update check ends in: the text and level for the status line, and the link to open, if any.
struct UpdateOutcome
{
    QString status;
    int level = 0;
    QString link;
};

/// Compares dotted versions number by number. Missing parts, and parts that are no 32-bit number, count as 0.
bool isNewerVersion(const QString &latest, const QString &current);

/// Whether `link` leads to a page on the web: HTTP or HTTPS with a host, read leniently. Nothing else that a
/// service names is handed to the desktop, which would open files and start programs by it.
bool isWebAddress(const QString &link);

/// Reads the service's answer about the newest version, for a program of version `current`. Pure.
UpdateOutcome decodeUpdateAnswer(const QJsonObject &answer, const QString &current);
