#include "app/AppState.h"

#include "core/FileTools.h"
#include "core/Version.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype shownAnswerLength = 240;

/// What an output is called: a fixed name, or a suffix after the workspace's or the input file's name.
enum class Naming
{
    Fixed,
    Workspace,
    Input
};
/// What travels beside the input.
enum class Extra
{
    None,
    BaseFile,
    HeaderAndExport
};

struct Conversion
{
    const char *key;
    const char *operation;
    Naming naming;
    const char *name;
    Extra extra = Extra::None;
};

constexpr Conversion conversions[] = {
    {"kvt2bin", "convert_kvt2bin", Naming::Workspace, ".bin"},
    {"cm2450_kvt2bin", "convert_cm2450_kvt2bin", Naming::Workspace, "_cm2450.zip"},
    {"ctz2bin", "convert_ctz2bin", Naming::Input, ".bin"},
    {"ctz2kvt", "convert_ctz2kvt", Naming::Fixed, "from_ctz.kvt"},
    {"kvt2efi", "convert_kvt2efi_live_bin", Naming::Workspace, "_efi.bin"},
    {"bin2kvt", "convert_bin2kvt_import", Naming::Fixed, "imported.kvt", Extra::BaseFile},
    {"cm2450_import", "convert_cm2450_bin2kvt", Naming::Fixed, "cm2450_imported.kvt", Extra::HeaderAndExport},
};

enum class Option
{
    None,
    XcalMode,
    FlatMode,
    SkipVerify
};

struct ContainerConversion
{
    const char *kind;
    const char *operation;
    Naming naming;
    const char *name;
    Option option;
};

constexpr ContainerConversion containerConversions[] = {
    {"xcal", "convert_xcal2bin", Naming::Input, ".bin", Option::XcalMode},
    {"phf", "convert_xcal2bin", Naming::Input, ".bin", Option::FlatMode},
    {"vbf", "convert_vbf2bin", Naming::Input, ".bin", Option::SkipVerify},
    {"ecfg", "convert_ecfg2xdf", Naming::Fixed, "ecfg.xdf", Option::None},
};

QString inputBaseName(const QString &name)
{
    return QFileInfo(name).completeBaseName();
}

FieldList optionFields(Option option, const QString &xcalMode, bool skipVerify)
{
    const QString mode = u"xcal_mode"_s;
    switch (option) {
    case Option::XcalMode:
        return {{mode, xcalMode}};
    case Option::FlatMode:
        return {{mode, u"flat"_s}};
    case Option::SkipVerify:
        return {{u"vbf_skip_verify"_s, skipVerify ? u"1"_s : u"0"_s}};
    case Option::None:
        break;
    }
    return {};
}

} // namespace

void AppState::convertOp(const QString &op, const QString &path, const QString &path2, const QString &)
{
    QByteArray input;
    QString inputName = m_file.name;
    if (path.isEmpty()) {
        input = currentKvtBytes();
        if (input.isEmpty()) {
            setStatus(u"Open an KVT on MAIN or pick a file first."_s, 0);
            return;
        }
    } else {
        input = readInput(path);
        inputName = QFileInfo(path).fileName();
        if (input.isEmpty())
            return;
    }

    const auto *const conversion =
        std::find_if(std::begin(conversions), std::end(conversions),
                     [&op](const Conversion &entry) { return op == QLatin1String(entry.key); });
    if (conversion == std::end(conversions))
        return;

    QList<std::pair<QString, QByteArray>> extraFiles;
    if (conversion->extra == Extra::BaseFile && !m_baseKvt.isEmpty())
        extraFiles.append({u"import"_s, m_baseKvt});
    if (conversion->extra == Extra::HeaderAndExport) {
        extraFiles = {{u"header"_s, input}, {u"export"_s, FileTools::readFile(path2)}};
    }
    const QString suffix = QLatin1String(conversion->name);
    const QString outName = conversion->naming == Naming::Workspace ? suggestName(suffix)
        : conversion->naming == Naming::Input                       ? inputBaseName(inputName) + suffix
                                                                    : suffix;
    workerConvert(QLatin1String(conversion->operation), input, inputName, {}, extraFiles, outName);
}

void AppState::pickBaseKvt(const QString &path)
{
    m_baseKvt = readInput(path);
    if (!m_baseKvt.isEmpty())
        setStatus(u"Base KVT set: %1"_s.arg(QFileInfo(path).fileName()), 1);
}

void AppState::toolConvert(const QString &kind, const QString &path, const QString &)
{
    const auto *const conversion =
        std::find_if(std::begin(containerConversions), std::end(containerConversions),
                     [&kind](const ContainerConversion &entry) { return kind == QLatin1String(entry.kind); });
    if (conversion == std::end(containerConversions))
        return;
    const QString inputName = QFileInfo(path).fileName();
    const QString suffix = QLatin1String(conversion->name);
    const QString outName = conversion->naming == Naming::Input ? inputBaseName(inputName) + suffix : suffix;
    workerConvert(QLatin1String(conversion->operation), FileTools::readFile(path), inputName,
                  optionFields(conversion->option, m_tools.xcalMode, m_tools.vbfSkipVerify), {}, outName);
}

void AppState::workerConvert(const QString &operation, const QByteArray &input, const QString &inputName,
                             const FieldList &fields, const QList<std::pair<QString, QByteArray>> &extraFiles,
                             const QString &outName)
{
    if (input.isEmpty()) {
        setStatus(u"No input file."_s, 0);
        return;
    }
    const QString fileName = inputName.isEmpty() ? u"input.bin"_s : inputName;
    QList<WorkerFile> files{{u"file"_s, fileName, input}};
    for (const auto &[name, bytes] : extraFiles)
        files.append({name, name + u".bin"_s, bytes});

    setBusy(true);
    m_client->kvtWorker(applicationVersion(), operation, fields, files,
                        [this, outName](const WorkerResult &result) { finishConversion(result, outName); });
}

void AppState::finishConversion(const WorkerResult &result, const QString &outName)
{
    setBusy(false);
    if (failed(result.error))
        return;
    if (result.isJson) {
        setStatus(result.text.left(shownAnswerLength), 1);
        return;
    }
    const QString path = saveToDocuments(result.data, outName);
    if (path.isEmpty())
        return;
    if (FileTools::isKvtFile(outName))
        openKvt(path);
    setStatus(u"Saved %1"_s.arg(outName), 1);
}
