#pragma once

#include <QFile>
#include <QString>

#include <filesystem>

/// A path as the standard library takes it. Never throws, unlike QFileInfo's own conversion, which throws on
/// an unpaired surrogate.
inline std::filesystem::path systemPath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}
