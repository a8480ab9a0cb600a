// Starts a program with a window and looks at it from outside, the same way whatever the program is made of.
//   window_probe frame COMMAND [ARGUMENT...]    milliseconds from the start to the first frame, and
//                                               how many of them the program computed
//   window_probe memory COMMAND [ARGUMENT...]   resident and proportional memory in MiB, when it is idle
//   window_probe idle COMMAND [ARGUMENT...]     milliseconds that it computes in five minutes of idleness
// A frame is there when the window manager shows the window and its pixels are not all alike. The program and
// what it started are ended afterwards.

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

// Nothing takes this long, not even on a machine that does ten other things.
constexpr auto patience = 60s;
constexpr auto pollInterval = 1ms;
constexpr auto idleTime = 5min;
// So many lines of the window are looked at: any text or button crosses one, and the display is hardly kept
// busy.
constexpr int lineCount = 48;
// What is smaller is a splash screen or a helper of Qt or GTK.
constexpr int smallestWindow = 200;

template <typename Reply> using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply> Owned<Reply> own(Reply *reply)
{
    return {reply, &std::free};
}

class Display
{
public:
    Display()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection))
            return;
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        constexpr std::string_view name = "_NET_CLIENT_LIST";
        const auto atom = own(xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, name.size(), name.data()), nullptr));
        if (atom)
            m_clientList = atom->atom;
    }
    ~Display() { xcb_disconnect(m_connection); }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    bool isOpen() const { return !xcb_connection_has_error(m_connection); }

    // The windows that the window manager looks after.
    std::vector<xcb_window_t> windows() const
    {
        constexpr std::uint32_t most = 64;
        const auto reply = own(xcb_get_property_reply(
            m_connection, xcb_get_property(m_connection, 0, m_root, m_clientList, XCB_ATOM_WINDOW, 0, most),
            nullptr));
        if (!reply)
            return {};
        const auto *const first = static_cast<const xcb_window_t *>(xcb_get_property_value(reply.get()));
        return {first, first + xcb_get_property_value_length(reply.get()) / int{sizeof *first}};
    }

    bool hasFrame(xcb_window_t window) const
    {
        const auto attributes = own(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        const auto geometry =
            own(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE || !geometry
            || std::min(geometry->width, geometry->height) < smallestWindow)
            return false;
        return hasTwoColours(window, geometry->width, geometry->height);
    }

private:
    bool hasTwoColours(xcb_window_t window, std::uint16_t width, std::uint16_t height) const
    {
        std::array<xcb_get_image_cookie_t, lineCount> cookies{};
        for (int line = 0; line < lineCount; ++line)
            cookies[static_cast<std::size_t>(line)] = xcb_get_image(
                m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0,
                static_cast<std::int16_t>((2 * line + 1) * height / (2 * lineCount)), width, 1, 0x00ffffff);
        std::optional<std::uint32_t> colour;
        bool two = false;
        for (const xcb_get_image_cookie_t cookie : cookies) {
            const auto image = own(xcb_get_image_reply(m_connection, cookie, nullptr));
            if (!image)
                continue;
            const std::uint8_t *const data = xcb_get_image_data(image.get());
            for (int i = 0; i + 4 <= xcb_get_image_data_length(image.get()); i += 4) {
                std::uint32_t pixel;
                std::memcpy(&pixel, data + i, sizeof pixel);
                pixel &= 0x00ffffff;
                two = two || pixel != colour.value_or(pixel);
                colour = pixel;
            }
        }
        return two;
    }

    xcb_connection_t *m_connection;
    xcb_window_t m_root = XCB_NONE;
    xcb_atom_t m_clientList = XCB_ATOM_NONE;
};

// A program in a process group of its own, ended with all it started.
class Child
{
public:
    explicit Child(char **command)
        : m_pid(fork())
    {
        if (m_pid != 0)
            return;
        setpgid(0, 0);
        execvp(command[0], command);
        std::perror(command[0]);
        _exit(127);
    }
    ~Child()
    {
        if (m_pid <= 0)
            return;
        setpgid(m_pid, m_pid); // in case the child did not get so far yet
        kill(-m_pid, SIGTERM);
        for (const auto end = Clock::now() + 2s; Clock::now() < end && !m_ended;)
            pause();
        kill(-m_pid, SIGKILL);
        if (!m_ended)
            waitpid(m_pid, nullptr, 0);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    bool isRunning()
    {
        m_ended = m_ended || m_pid <= 0 || waitpid(m_pid, nullptr, WNOHANG) == m_pid;
        return !m_ended;
    }

    // Of the whole group.
    std::vector<pid_t> processes() const
    {
        std::vector<pid_t> found;
        for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
            const std::string name = entry.path().filename();
            const pid_t process = std::atoi(name.c_str());
            if (process > 0 && getpgid(process) == m_pid)
                found.push_back(process);
        }
        return found;
    }

private:
    void pause()
    {
        std::this_thread::sleep_for(pollInterval);
        isRunning();
    }

    pid_t m_pid;
    bool m_ended = false;
};

// The window of the program that was started, once it shows a frame.
bool awaitFrame(const Display &display, std::vector<xcb_window_t> earlier, Child &child)
{
    for (const auto end = Clock::now() + patience; Clock::now() < end && child.isRunning();) {
        const std::vector<xcb_window_t> windows = display.windows();
        // The number of a window that has just gone may be given to the next one.
        std::erase_if(earlier, [&windows](xcb_window_t window) {
            return std::find(windows.begin(), windows.end(), window) == windows.end();
        });
        for (const xcb_window_t window : windows) {
            if (std::find(earlier.begin(), earlier.end(), window) == earlier.end()
                && display.hasFrame(window))
                return true;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return false;
}

// User and system time of the processes.
Milliseconds computed(const Child &child)
{
    Milliseconds sum{};
    for (const pid_t process : child.processes()) {
        clockid_t clock{};
        timespec time{};
        if (clock_getcpuclockid(process, &clock) == 0 && clock_gettime(clock, &time) == 0)
            sum += std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }
    return sum;
}

// Until the program has hardly computed for a second; a blinking cursor does not count.
void awaitIdle(const Child &child)
{
    Milliseconds before = computed(child);
    for (const auto end = Clock::now() + patience; Clock::now() < end;) {
        std::this_thread::sleep_for(1s);
        const Milliseconds now = computed(child);
        if (now - before <= 30ms)
            return;
        before = now;
    }
}

void printMemory(const Child &child)
{
    double resident = 0;
    double proportional = 0;
    for (const pid_t process : child.processes()) {
        std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
        for (std::string line; std::getline(file, line);) {
            const auto kiB = [&line] { return std::atof(line.c_str() + line.find(':') + 1); };
            resident += line.starts_with("Rss:") ? kiB() : 0;
            proportional += line.starts_with("Pss:") ? kiB() : 0;
        }
    }
    std::printf("%.1f %.1f\n", resident / 1024, proportional / 1024);
}

} // namespace

int main(int argc, char **argv)
{
    const std::string_view what = argc > 2 ? argv[1] : "";
    if (what != "frame" && what != "memory" && what != "idle") {
        std::fprintf(stderr, "Usage: window_probe frame|memory|idle COMMAND [ARGUMENT...]\n");
        return 2;
    }
    const Display display;
    if (!display.isOpen()) {
        std::fprintf(stderr, "window_probe: there is no display\n");
        return 1;
    }
    const std::vector<xcb_window_t> earlier = display.windows();
    const auto start = Clock::now();
    Child child(argv + 2);
    if (!awaitFrame(display, earlier, child)) {
        std::fprintf(stderr, "window_probe: %s shows no window\n", argv[2]);
        return 1;
    }
    const Milliseconds taken = Clock::now() - start;
    if (what == "frame") {
        std::printf("%.1f %.1f\n", taken.count(), computed(child).count());
        return 0;
    }
    awaitIdle(child);
    if (what == "memory") {
        printMemory(child);
        return 0;
    }
    const Milliseconds before = computed(child);
    std::this_thread::sleep_for(idleTime);
    std::printf("%.1f\n", (computed(child) - before).count());
    return 0;
}
