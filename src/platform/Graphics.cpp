#include "platform/Graphics.h"

#include <QDir>
#include <QGuiApplication>

using namespace Qt::StringLiterals;

#if QT_CONFIG(xcb) && defined(KVTEDITOR_XCB)
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace {

bool offers(xcb_connection_t *display, std::string_view extension)
{
    const std::unique_ptr<xcb_query_extension_reply_t, decltype(&std::free)> reply(
        xcb_query_extension_reply(
            display,
            xcb_query_extension(display, static_cast<std::uint16_t>(extension.size()), extension.data()),
            nullptr),
        &std::free);
    return !reply || reply->present;
}

// A virtual or VNC display usually offers none of these. If one is offered and fails later, OpenGL is
// emulated, as without this check.
bool displayHasNoCard()
{
    auto *const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!native)
        return false;
    constexpr std::string_view ways[] = {"DRI3", "DRI2", "NV-GLX"};
    return std::none_of(std::begin(ways), std::end(ways),
                        [native](std::string_view way) { return offers(native->connection(), way); });
}

} // namespace
#else
namespace {

bool displayHasNoCard()
{
    return false;
}

} // namespace
#endif

bool hasNoGraphicsCard()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb"_L1)
        return displayHasNoCard();
    if (platform.startsWith("wayland"_L1))
        return QDir(u"/dev/dri"_s).entryList({u"renderD*"_s}, QDir::System).isEmpty();
    return false;
}
