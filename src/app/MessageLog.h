#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The program's only log: a plain text file in the temporary folder, one line per milestone and per message
// of Qt. Everything here may be called from any thread.

/// Appends one line to the log. Does nothing when the log cannot be opened or is not the user's own regular
/// file.
void logLine(QByteArrayView text);

/// From now on captures and logs all of Qt's messages except debug output, and prints none.
void installMessageLog();

/// The texts captured so far, in arrival order.
QStringList capturedMessages();

/// What the user reads when the window could not be loaded.
QString loadFailureText(const QStringList &messages);
