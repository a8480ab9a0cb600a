#include "app/AppState.h"

#include "platform/ToolLauncher.h"
#include "platform/WebToolWindow.h"

#include <QUrl>

void AppState::setVbfSkipVerify(bool skip)
{
    if (m_tools.vbfSkipVerify == skip)
        return;
    m_tools.vbfSkipVerify = skip;
    emit toolsChanged();
}

void AppState::setXcalMode(const QString &mode)
{
    if (m_tools.xcalMode == mode)
        return;
    m_tools.xcalMode = mode;
    emit toolsChanged();
}

void AppState::goHelp()
{
    const QString path = ToolLauncher::findHelpPdf();
    if (path.isEmpty()) {
        setStatus(QStringLiteral("User manual PDF was not found."), 0);
        return;
    }
    openWebTool(QUrl::fromLocalFile(path).toString(), QStringLiteral("User Manual"));
}

void AppState::openWebTool(const QString &url, const QString &title)
{
    if (!m_webTool)
        m_webTool = std::make_unique<WebToolWindow>();
    m_webTool->openUrl(url, title);
    setStatus(QStringLiteral("Opened %1.").arg(title), 1);
}
