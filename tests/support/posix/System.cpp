#include "System.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace test
{

const char* const kLogFile = "/var/tmp/Palmora.log";
const char* const kFullDevice = "/dev/full";
const bool kListsInByteOrder = true;
const int g_lock = open("/var/tmp", O_RDONLY | O_CLOEXEC);

long ThreadRemains()
{
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages / 512;
}

void LockMachine()
{
    flock(g_lock, LOCK_EX);
}

bool MakeFifo(const char* path)
{
    return mkfifo(path, 0666) == 0;
}

} // namespace test

#if defined(ZELUTIL_XCB)

#include <xcb/xcb.h>

test::Window::Window(bool hasFrame)
{
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    owner = connection;
    if (xcb_connection_has_error(connection) != 0)
        return;

    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const std::uint32_t window = xcb_generate_id(connection), pixmap = xcb_generate_id(connection);
    const std::uint16_t border = hasFrame ? 3 : 0;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, -10, 15, 320, 200, border,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_create_pixmap(connection, screen->root_depth, pixmap, screen->root, 1, 1);

    // The widths of the frame on the left, the right, the top and the bottom, as window managers tell them.
    const std::uint32_t sides[] = {5, 6, 20, 7}, count = hasFrame ? 4 : 0;
    const auto name = xcb_intern_atom(connection, false, 18, "_NET_FRAME_EXTENTS");
    xcb_intern_atom_reply_t* const atom = xcb_intern_atom_reply(connection, name, nullptr);
    const auto request = xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, window, atom->atom,
                                                     XCB_ATOM_CARDINAL, 32, count, sides);
    std::free(xcb_request_check(connection, request)); // waits
    std::free(atom);

    std::memcpy(handle, &window, sizeof window);
    std::memcpy(noWindow, &pixmap, sizeof pixmap);
    outerWidth = hasFrame ? 5 + 3 + 320 + 3 + 6 : 320;
    outerHeight = hasFrame ? 20 + 3 + 200 + 3 + 7 : 200;
}

void test::Window::Close()
{
    auto* const connection = static_cast<xcb_connection_t*>(owner);
    xcb_window_t window;
    std::memcpy(&window, handle, sizeof window);
    std::free(xcb_request_check(connection, xcb_destroy_window_checked(connection, window)));
    xcb_disconnect(connection);
}

#else

test::Window::Window(bool) {}

void test::Window::Close() {}

#endif
