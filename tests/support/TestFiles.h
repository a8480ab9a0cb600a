#pragma once

#include <QByteArray>
#include <QString>

/// Creates a file, with its folders, and returns its path. Ends the program on failure.
QString makeFile(const QString &path, const QByteArray &content = {});

/// Ends the program when the file cannot be read.
QByteArray contentOf(const QString &path);
