#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The program's only log: a plain text file in the temporary folder, one line per milestone and per message
// of Qt. Everything here may be called from any thread.

/// Appends one line to the log. A log that cannot be opened, or is no regular file of the user's own, is
/// passed over without a word.
void logLine(QByteArrayView text);

/// From now on every message of Qt but debug output is captured and logged, and printed nowhere.
void installMessageLog();

/// The texts captured so far, in arrival order.
QStringList capturedMessages();

/// What the user reads when the window could not be loaded.
QString loadFailureText(const QStringList &messages);
