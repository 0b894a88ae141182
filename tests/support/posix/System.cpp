#include "System.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test
{

const char* const kLogFile = "/var/tmp/Palmora.log";
const char* const kNullDevice = "/dev/null";
const bool kListsInByteOrder = true;

int OpenDescriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += fcntl(descriptor, F_GETFD) != -1;
    return count;
}

long ThreadRemains()
{
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages / 1024;
}

bool MakeFifo(const char* path)
{
    return mkfifo(path, 0666) == 0;
}

FullDisk::FullDisk(long bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(bytes);
    setrlimit(RLIMIT_FSIZE, &limit);
}

FullDisk::~FullDisk()
{
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_DFL);
}

bool FullDisk::IsPossible()
{
    return true;
}

NoRights::NoRights()
{
    constexpr uid_t kNobody = 65534;
    if (getuid() == 0 && seteuid(kNobody) != 0)
        throw std::runtime_error("rights cannot be dropped");
}

NoRights::~NoRights()
{
    if (getuid() == 0 && seteuid(0) != 0)
        std::abort();
}

bool NoRights::ArePossible()
try
{
    const NoRights noRights;
    return true;
}
catch (const std::runtime_error&)
{
    return false;
}

EndlessPipe::EndlessPipe(const std::string& path, const std::string& first, const std::string& again)
    : m_path(path)
{
    if (!MakeFifo(path.c_str()))
        throw std::runtime_error("no pipe");
    std::string many;
    while (many.size() < 65536)
        many += again;
    m_writer = fork(); // has descriptors of its own
    if (m_writer != 0)
        return;
    const int pipe = open(path.c_str(), O_WRONLY); // waits for a reader; the signal of a broken pipe ends it
    for (const std::string* text = &first; write(pipe, text->data(), text->size()) >= 0;)
        text = &many;
    _exit(0);
}

EndlessPipe::~EndlessPipe()
{
    close(open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)); // nobody may have read
    waitpid(m_writer, nullptr, 0);
    unlink(m_path.c_str());
}

ProcessLock::ProcessLock()
{
    const std::intptr_t descriptor = open("/var/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        throw std::runtime_error("no folder for the log");
    while (flock(static_cast<int>(descriptor), LOCK_EX) != 0 && errno == EINTR)
    {
    }
    m_handle = reinterpret_cast<void*>(descriptor);
}

ProcessLock::~ProcessLock()
{
    close(static_cast<int>(reinterpret_cast<std::intptr_t>(m_handle)));
}

} // namespace test

#if defined(ZELUTIL_XCB)

#include <xcb/xcb.h>

namespace test
{

bool Window::ArePossible()
{
    return std::getenv("DISPLAY") != nullptr;
}

Window::Window(unsigned width, unsigned height, bool hasFrame)
{
    const auto border = static_cast<std::uint16_t>(hasFrame ? 3 : 0);
    constexpr std::uint32_t kSides[] = {5, 6, 20, 7}; // left, right, top, bottom, as a window manager says
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    m_connection = connection;
    if (xcb_connection_has_error(connection) != 0)
        return;

    const xcb_window_t window = xcb_generate_id(connection);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, -10, 15,
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), border,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    m_frameWidth = width + 2U * border;
    m_frameHeight = height + 2U * border;
    if (hasFrame)
    {
        const auto name = xcb_intern_atom(connection, false, 18, "_NET_FRAME_EXTENTS");
        xcb_intern_atom_reply_t* const atom = xcb_intern_atom_reply(connection, name, nullptr);
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL, 32, 4,
                            kSides);
        std::free(atom);
        m_frameWidth += kSides[0] + kSides[1];
        m_frameHeight += kSides[2] + kSides[3];
    }
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); // waits

    std::memcpy(m_handle, &window, sizeof window);
}

void Window::Close()
{
    auto* const connection = static_cast<xcb_connection_t*>(m_connection);
    xcb_window_t window;
    std::memcpy(&window, m_handle, sizeof window);
    xcb_destroy_window(connection, window);
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

Window::~Window()
{
    xcb_disconnect(static_cast<xcb_connection_t*>(m_connection));
}

} // namespace test

#else

namespace test
{

bool Window::ArePossible()
{
    return false;
}

Window::Window(unsigned, unsigned, bool) {}
Window::~Window() = default;
void Window::Close() {}

} // namespace test

#endif
