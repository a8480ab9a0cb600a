#include "ui/PlainFileDialogs.h"

#include <QLatin1String>
#include <QLibraryInfo>
#include <QVersionNumber>

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct Replacement
{
    QLatin1String original;
    QLatin1String ours;
};

constexpr std::array replacements{
    Replacement{"/FolderBreadcrumbBar.qml"_L1, "DialogFolderBar.qml"_L1},
    Replacement{"/FileDialogDelegateLabel.qml"_L1, "DialogNameLabel.qml"_L1},
    Replacement{"/FolderDialogDelegateLabel.qml"_L1, "DialogNameLabel.qml"_L1},
};

// The last version known to need this. The dialogs of later ones may differ and are not changed: their bar of
// folders may be white.
bool known()
{
    return QLibraryInfo::version() < QVersionNumber(6, 12);
}

} // namespace

QUrl PlainFileDialogs::intercept(const QUrl &url, DataType type)
{
    if (!known() || type != QmlFile || !url.path().contains("/QtQuick/Dialogs/quickimpl/qml/"_L1))
        return url;
    for (const Replacement &replacement : replacements) {
        if (url.path().endsWith(replacement.original))
            return QUrl("qrc:/qt/qml/KvtEditor/src/ui/dialogs/"_L1 + replacement.ours);
    }
    return url;
}
