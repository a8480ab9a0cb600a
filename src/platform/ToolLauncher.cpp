#include "platform/ToolLauncher.h"

#include "core/ErrorText.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#include <span>

using namespace Qt::StringLiterals;

namespace {

enum class Base
{
    ToolsRoot,
    Program,
    AboveToolsRoot
};

struct Candidate
{
    Base base;
    const char *path;
};

#define HELP_FILE "KVT_File_Editor_2026_User_Manual.pdf"
#define CONVERTER_BUNDLE "vbf_phf_bin/Ford VBF-PHF BIN Converter.app"

constexpr Candidate j1939[] = {
    {Base::ToolsRoot, "j1939_dtc_converter/j1939_gui.exe"},
    {Base::Program, "tools/j1939_dtc_converter/j1939_gui.exe"},
};
constexpr Candidate vbfPhfBin[] = {
    {Base::Program, "../Resources/tools/" CONVERTER_BUNDLE},
    {Base::ToolsRoot, CONVERTER_BUNDLE},
    {Base::Program, "tools/" CONVERTER_BUNDLE},
};
constexpr Candidate checksum[] = {
    {Base::ToolsRoot, "checksum/Launch_LSuite_VOX_Theme.bat"},
    {Base::ToolsRoot, "checksum/checksum-gui.exe"},
};
constexpr Candidate delcoChecksum[] = {
    {Base::ToolsRoot, "delco-checksum/checksum-gui.exe"},
    {Base::ToolsRoot, "delco-checksum/gm-ecu-checksum-corrector.exe"},
};
constexpr Candidate efdReader[] = {
    {Base::ToolsRoot, "efd_reader/EFD_Reader.exe"},
};
constexpr Candidate helpPdf[] = {
    {Base::Program, HELP_FILE},
    {Base::Program, "docs/" HELP_FILE},
    {Base::AboveToolsRoot, "docs/" HELP_FILE},
    {Base::AboveToolsRoot, "Release/" HELP_FILE},
    {Base::AboveToolsRoot, "server/App_Data/manuals/" HELP_FILE},
};

QDir folderOf(Base base)
{
    switch (base) {
    case Base::ToolsRoot:
        return QDir(ToolLauncher::toolsRoot());
    case Base::AboveToolsRoot:
        return QDir(QFileInfo(ToolLauncher::toolsRoot()).absolutePath());
    case Base::Program:
        break;
    }
    return QDir(QCoreApplication::applicationDirPath());
}

// Absolute path of the first candidate that exists, or an empty string.
QString firstExisting(std::span<const Candidate> candidates)
{
    for (const Candidate &candidate : candidates) {
        const QFileInfo file(folderOf(candidate.base).filePath(QLatin1String(candidate.path)));
        if (file.exists())
            return file.absoluteFilePath();
    }
    return {};
}

bool fail(QString *error, const QString &text)
{
    setError(error, text);
    return false;
}

bool startDetachedTool(const QString &program, const QString &workingFolder, QString *error)
{
    if (program.isEmpty())
        return fail(error, u"Tool executable was not found."_s);
    return QProcess::startDetached(program, {}, workingFolder);
}

bool launchFirst(std::span<const Candidate> candidates, QString *error)
{
    const QString program = firstExisting(candidates);
    return startDetachedTool(program, QFileInfo(program).absolutePath(), error);
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
    return QDir(QCoreApplication::applicationDirPath()).filePath(u"tools"_s);
}

bool ToolLauncher::launchJ1939(QString *error)
{
    return launchFirst(j1939, error);
}

bool ToolLauncher::launchVbfPhfBin(QString *error)
{
    const QString bundle = firstExisting(vbfPhfBin);
    if (bundle.isEmpty())
        return fail(error, u"VBF/PHF converter was not found."_s);
    if (!QProcess::startDetached(u"/usr/bin/open"_s, {bundle}))
        return fail(error, u"Failed to open %1"_s.arg(bundle));
    return true;
}

bool ToolLauncher::launchChecksum(QString *error)
{
    return launchFirst(checksum, error);
}

bool ToolLauncher::launchDelcoChecksum(QString *error)
{
    return launchFirst(delcoChecksum, error);
}

bool ToolLauncher::launchEfdReader(QString *error)
{
    return launchFirst(efdReader, error);
}

QString ToolLauncher::findHelpPdf()
{
    return firstExisting(helpPdf);
}

bool ToolLauncher::launchHelpPdf(QString *error)
{
    const QString manual = findHelpPdf();
    if (manual.isEmpty())
        return fail(error, u"User manual PDF was not found."_s);
    return QDesktopServices::openUrl(QUrl::fromLocalFile(manual));
}
