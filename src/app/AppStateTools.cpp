#include "app/AppState.h"

#include "api/ServiceConfig.h"
#include "api/UpdateCheck.h"
#include "core/FileTools.h"
#include "platform/ToolLauncher.h"
#include "platform/WebToolWindow.h"

#include <QUrl>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

struct Launcher
{
    const char *key;
    bool (*launch)(QString *error);
};

constexpr Launcher launchers[] = {
    {"j1939", ToolLauncher::launchJ1939},       {"vbfphf", ToolLauncher::launchVbfPhfBin},
    {"checksum", ToolLauncher::launchChecksum}, {"delco", ToolLauncher::launchDelcoChecksum},
    {"efd", ToolLauncher::launchEfdReader},     {"help", ToolLauncher::launchHelpPdf},
};

} // namespace

void AppState::setVbfSkipVerify(bool skip)
{
    if (std::exchange(m_tools.vbfSkipVerify, skip) != skip)
        emit toolsChanged();
}

void AppState::setXcalMode(const QString &mode)
{
    if (std::exchange(m_tools.xcalMode, mode) != mode)
        emit toolsChanged();
}

void AppState::decodeJ1939(const QString &hex)
{
    m_tools.j1939Rows.clear();
    const QList<J1939Fault> faults = FileTools::decodeJ1939(hex);
    for (const J1939Fault &fault : faults) {
        const QString line = u"SPN %1  FMI %2 (%3)  OC %4  lamp %5  [%6]"_s.arg(
            QString::number(fault.spn), QString::number(fault.fmi), fault.fmiText, QString::number(fault.oc),
            QString::number(fault.lamp), fault.raw);
        m_tools.j1939Rows.append(QVariantMap{{u"text"_s, line}});
    }
    emit toolsChanged();
    setStatus(u"%1 DTC(s)."_s.arg(m_tools.j1939Rows.size()), 1);
}

void AppState::launchTool(const QString &name)
{
    const auto *const launcher =
        std::find_if(std::begin(launchers), std::end(launchers),
                     [&name](const Launcher &entry) { return name == QLatin1String(entry.key); });
    QString error;
    if (launcher != std::end(launchers) && launcher->launch(&error))
        setStatus(u"Launched %1."_s.arg(name), 1);
    else
        setStatus(error, 0);
}

void AppState::goHelp()
{
    const QString path = ToolLauncher::findHelpPdf();
    if (path.isEmpty()) {
        setStatus(u"User manual PDF was not found."_s, 0);
        return;
    }
    openWebTool(QUrl::fromLocalFile(path).toString(), u"User Manual"_s);
}

QString AppState::serviceUrl(const QString &path) const
{
    return m_client->url(path);
}

QString AppState::storeUrl() const
{
    const QString address = serviceConfig().storeUrl;
    return isWebAddress(address) ? address : QString();
}

void AppState::openWebTool(const QString &url, const QString &title)
{
    // Without a service its pages have no address.
    if (!m_client->refusal().isEmpty() && QUrl(url).isRelative()) {
        setStatus(m_client->refusal(), 0);
        return;
    }
    if (!m_webTool)
        m_webTool = std::make_unique<WebToolWindow>();
    m_webTool->openUrl(url, title);
    setStatus(u"Opened %1."_s.arg(title), 1);
}
