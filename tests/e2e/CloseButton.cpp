// Acts on another program's window as the window manager's frame around it would, over X11:
//   kvteditor_close_button await PID  waits until that process shows a window with a picture in it
//   kvteditor_close_button press PID  presses the window's close button
// It ends with 1 when there is no such window, or the process ends before it shows one.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

namespace {

// Asked again and again: by itself X tells neither what is drawn in a window nor that its process has ended.
constexpr std::chrono::milliseconds pollInterval(5);

// Requests about a window that closes meanwhile fail; that is not a reason to stop.
int ignoreError(Display *, XErrorEvent *)
{
    return 0;
}

struct FreeX
{
    void operator()(void *data) const { XFree(data); }
};

struct DestroyImage
{
    void operator()(XImage *image) const { XDestroyImage(image); }
};

/// The numbers of a property; none when the window has no such property.
std::vector<unsigned long> numbers(Display *display, Window window, const char *property, Atom type)
{
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char *raw = nullptr;
    if (XGetWindowProperty(display, window, XInternAtom(display, property, False), 0, 1024, False, type,
                           &actualType, &format, &count, &left, &raw)
        != Success)
        return {};
    const std::unique_ptr<unsigned char, FreeX> data(raw);
    if (format != 32 || !raw || count == 0)
        return {};
    std::vector<unsigned long> result(count);
    std::memcpy(result.data(), raw, count * sizeof(unsigned long));
    return result;
}

/// The window of that process among those that the window manager knows.
std::optional<Window> windowOf(Display *display, unsigned long process)
{
    const std::vector<unsigned long> windows =
        numbers(display, DefaultRootWindow(display), "_NET_CLIENT_LIST", XA_WINDOW);
    for (const Window window : windows) {
        const std::vector<unsigned long> owner = numbers(display, window, "_NET_WM_PID", XA_CARDINAL);
        if (!owner.empty() && owner.front() == process)
            return window;
    }
    return std::nullopt;
}

/// Whether there is more than one colour in it.
bool hasPicture(Display *display, Window window)
{
    XWindowAttributes attributes;
    if (!XGetWindowAttributes(display, window, &attributes) || attributes.map_state != IsViewable)
        return false;
    const unsigned width = static_cast<unsigned>(attributes.width);
    const std::unique_ptr<XImage, DestroyImage> line(
        XGetImage(display, window, 0, attributes.height / 4, width, 1, AllPlanes, ZPixmap));
    if (!line)
        return false;
    for (int x = 1; x < line->width; ++x) {
        if (XGetPixel(line.get(), x, 0) != XGetPixel(line.get(), 0, 0))
            return true;
    }
    return false;
}

bool isRunning(pid_t process)
{
    return kill(process, 0) == 0 || errno == EPERM;
}

bool await(Display *display, pid_t process)
{
    while (isRunning(process)) {
        const std::optional<Window> window = windowOf(display, static_cast<unsigned long>(process));
        if (window && hasPicture(display, *window))
            return true;
        std::this_thread::sleep_for(pollInterval);
    }
    return false;
}

bool press(Display *display, pid_t process)
{
    const std::optional<Window> window = windowOf(display, static_cast<unsigned long>(process));
    if (!window)
        return false;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = *window;
    event.xclient.message_type = XInternAtom(display, "_NET_CLOSE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = CurrentTime;
    // As from a pager: the user asks for it.
    event.xclient.data.l[1] = 2;
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureNotifyMask | SubstructureRedirectMask,
               &event);
    XSync(display, False);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string_view what = argc == 3 ? argv[1] : "";
    const pid_t process = argc == 3 ? static_cast<pid_t>(std::atoi(argv[2])) : 0;
    if (process <= 0 || (what != "await" && what != "press")) {
        std::fprintf(stderr, "usage: kvteditor_close_button await|press PID\n");
        return 2;
    }
    Display *const display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "kvteditor_close_button: there is no display\n");
        return 1;
    }
    XSetErrorHandler(ignoreError);
    const bool done = what == "await" ? await(display, process) : press(display, process);
    XCloseDisplay(display);
    return done ? 0 : 1;
}
