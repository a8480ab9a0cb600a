#pragma once

#include <QFile>
#include <QString>

#include <filesystem>

/// A path as the standard library takes it. Nothing throws: QFileInfo's own conversion does for half a
/// character.
inline std::filesystem::path systemPath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}
