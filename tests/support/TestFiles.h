#pragma once

#include <QByteArray>
#include <QString>

/// Makes a file, and the folders it needs; returns its path. Ends the program when that fails.
QString makeFile(const QString &path, const QByteArray &content = {});

/// Ends the program when the file cannot be read.
QByteArray contentOf(const QString &path);
