#include "ui/PlainFileDialogs.h"

#include <QLatin1String>
#include <QLibraryInfo>
#include <QVersionNumber>

#include <array>

namespace {

struct Replacement
{
    QLatin1String original;
    QLatin1String ours;
};

constexpr std::array replacements{
    Replacement{QLatin1String("/FolderBreadcrumbBar.qml"), QLatin1String("DialogFolderBar.qml")},
    Replacement{QLatin1String("/FileDialogDelegateLabel.qml"), QLatin1String("DialogNameLabel.qml")},
    Replacement{QLatin1String("/FolderDialogDelegateLabel.qml"), QLatin1String("DialogNameLabel.qml")},
};

// Up to the last one that still needs it. Later ones may be put together in another way, and are left alone.
bool known()
{
    return QLibraryInfo::version() < QVersionNumber(6, 12);
}

} // namespace

QUrl PlainFileDialogs::intercept(const QUrl &url, DataType type)
{
    if (!known() || type != QmlFile || !url.path().contains(QLatin1String("/QtQuick/Dialogs/quickimpl/qml/")))
        return url;
    for (const Replacement &replacement : replacements) {
        if (url.path().endsWith(replacement.original))
            return QUrl(QLatin1String("qrc:/qt/qml/KvtEditor/src/ui/dialogs/") + replacement.ours);
    }
    return url;
}
