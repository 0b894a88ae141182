#include "System.h"

#include <cstring>
#include <fcntl.h>
#include <sys/file.h>

const int g_lock = open("/var/tmp", O_RDONLY | O_CLOEXEC);

std::string test::LockLog()
{
    flock(g_lock, LOCK_EX);
    return "/var/tmp/Palmora.log";
}

#if defined(ZELUTIL_XCB)

#include <xcb/xcb.h>

xcb_connection_t* const g_display = xcb_connect(nullptr, nullptr);

test::Window::Window(bool hasFrame)
{
    if (xcb_connection_has_error(g_display) != 0)
        return;

    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(g_display)).data;
    const std::uint32_t window = xcb_generate_id(g_display), pixmap = xcb_generate_id(g_display);
    const std::uint16_t border = hasFrame ? 3 : 0;
    xcb_create_window(g_display, XCB_COPY_FROM_PARENT, window, screen->root, -10, 15, 320, 200, border,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_create_pixmap(g_display, screen->root_depth, pixmap, screen->root, 1, 1);

    // The widths of the frame on the left, the right, the top and the bottom, as window managers tell them.
    const std::uint32_t sides[] = {5, 6, 20, 7}, count = hasFrame ? 4 : 0;
    const auto name = xcb_intern_atom(g_display, false, 18, "_NET_FRAME_EXTENTS");
    xcb_intern_atom_reply_t* const atom = xcb_intern_atom_reply(g_display, name, nullptr);
    const auto request = xcb_change_property_checked(g_display, XCB_PROP_MODE_REPLACE, window, atom->atom,
                                                     XCB_ATOM_CARDINAL, 32, count, sides);
    std::free(xcb_request_check(g_display, request)); // waits
    std::free(atom);

    std::memcpy(handle, &window, sizeof window);
    std::memcpy(noWindow, &pixmap, sizeof pixmap);
    outerWidth = hasFrame ? 5 + 3 + 320 + 3 + 6 : 320;
    outerHeight = hasFrame ? 20 + 3 + 200 + 3 + 7 : 200;
}

#else

test::Window::Window(bool) {}

#endif
