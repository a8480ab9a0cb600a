#include "platform/ToolLauncher.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {

const QString helpFile = QStringLiteral("KVT_File_Editor_2026_User_Manual.pdf");

QString firstExisting(const QStringList &candidates)
{
    for (const QString &candidate : candidates) {
        if (QFileInfo::exists(candidate))
            return QFileInfo(candidate).absoluteFilePath();
    }
    return {};
}

} // namespace

QString ToolLauncher::toolsRoot()
{
#ifdef KVTEDITOR_SOURCE_DIR
    // The folder of this source file as a build saw it; release builds leave it out.
    const QString checkout = QDir::cleanPath(QStringLiteral(KVTEDITOR_SOURCE_DIR "/../../tools"));
    if (QFileInfo(checkout).isDir())
        return checkout;
#endif
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tools"));
}

QString ToolLauncher::findHelpPdf()
{
    const QDir app(QCoreApplication::applicationDirPath());
    const QDir base(QFileInfo(toolsRoot()).absolutePath());
    return firstExisting({app.filePath(helpFile), app.filePath(QStringLiteral("docs/") + helpFile),
                          base.filePath(QStringLiteral("docs/") + helpFile),
                          base.filePath(QStringLiteral("Release/") + helpFile),
                          base.filePath(QStringLiteral("server/App_Data/manuals/") + helpFile)});
}
