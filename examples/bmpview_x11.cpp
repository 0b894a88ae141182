#include "bmpview.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <vector>
#include <xcb/xcb.h>

namespace
{

struct Free
{
    void operator()(void* block) const { std::free(block); }
};

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

// Draws the picture into a memory context of this size and captures it with 32 bits.
bool Render(CWinDib& shown, const CWinDib& picture, int width, int height)
{
    CDC memory;
    CBitmap surface;
    if (!memory.CreateCompatibleDC(nullptr))
        return false;
    surface.Attach(CreateBitmap(width, height, 1, 32, nullptr));
    const HGDIOBJ previous = SelectObject(memory, surface.GetSafeHandle());
    SetStretchBltMode(memory, COLORONCOLOR);
    picture.StretchDraw(memory, 0, 0, width, height);
    const bool done = shown.Capture(memory, CRect(0, 0, width, height));
    SelectObject(memory, previous);
    return done;
}

class Window
{
public:
    Window(const CWinDib& picture, const char* title);

    // Handles all waiting events; false once the window was closed.
    bool HandleEvents();

    // Sleeps until an event arrives, but at most so many milliseconds; a negative number means no limit.
    void Wait(int milliseconds) const;

private:
    xcb_atom_t Atom(const char* name) const;
    void Paint() const;

    const CWinDib& m_picture;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_context = 0;
    xcb_atom_t m_deleteWindow = 0;
    std::uint8_t m_depth = 0;
    int m_width;
    int m_height;
};

Window::Window(const CWinDib& picture, const char* title)
    : m_picture(picture), m_connection(xcb_connect(nullptr, nullptr)), m_width(picture.Width()),
      m_height(picture.Height())
{
    xcb_connection_t* const connection = m_connection.get();
    if (xcb_connection_has_error(connection) != 0)
        throw std::runtime_error("there is no display");
    if (m_width > INT16_MAX || m_height > INT16_MAX)
        throw std::runtime_error("the picture is larger than a window can be");
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(setup).data;
    m_depth = screen->root_depth;
    if ((m_depth != 24 && m_depth != 32) || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST)
        throw std::runtime_error("the display does not take pixels of 32 bits, blue first");

    const std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    m_window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0,
                      static_cast<std::uint16_t>(m_width), static_cast<std::uint16_t>(m_height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK, &events);
    m_context = xcb_generate_id(connection);
    xcb_create_gc(connection, m_context, m_window, 0, nullptr);

    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(std::strlen(title)), title);
    m_deleteWindow = Atom("WM_DELETE_WINDOW");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, Atom("WM_PROTOCOLS"), XCB_ATOM_ATOM, 32,
                        1, &m_deleteWindow);
    xcb_map_window(connection, m_window);
    xcb_flush(connection);
}

xcb_atom_t Window::Atom(const char* name) const
{
    const auto question =
        xcb_intern_atom(m_connection.get(), false, static_cast<std::uint16_t>(std::strlen(name)), name);
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> answer(
        xcb_intern_atom_reply(m_connection.get(), question, nullptr));
    return answer == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : answer->atom;
}

bool Window::HandleEvents()
{
    while (const std::unique_ptr<xcb_generic_event_t, Free> event{xcb_poll_for_event(m_connection.get())})
    {
        switch (event->response_type & 0x7F)
        {
        case XCB_EXPOSE:
            Paint();
            break;
        case XCB_CONFIGURE_NOTIFY:
        {
            const auto* change = reinterpret_cast<const xcb_configure_notify_event_t*>(event.get());
            const bool resized = m_width != change->width || m_height != change->height;
            m_width = change->width;
            m_height = change->height;
            if (resized)
                Paint();
            break;
        }
        case XCB_CLIENT_MESSAGE:
            if (reinterpret_cast<const xcb_client_message_event_t*>(event.get())->data.data32[0] ==
                m_deleteWindow)
                return false;
            break;
        default:
            break;
        }
    }
    return xcb_connection_has_error(m_connection.get()) == 0;
}

void Window::Wait(int milliseconds) const
{
    pollfd input = {xcb_get_file_descriptor(m_connection.get()), POLLIN, 0};
    poll(&input, 1, milliseconds);
}

// Sends the rows from the top down, as many at a time as one request can hold.
void Window::Paint() const
{
    CWinDib shown;
    if (!Render(shown, m_picture, m_width, m_height))
        throw std::runtime_error("there is no memory for the window's pixels");
    xcb_connection_t* const connection = m_connection.get();
    const int rowBytes = shown.BytesPerScanLine();
    const std::uint32_t requestBytes = 4 * xcb_get_maximum_request_length(connection) - 64;
    const int band =
        std::clamp(static_cast<int>(requestBytes / static_cast<std::uint32_t>(rowBytes)), 1, m_height);
    std::vector<unsigned char> rows(static_cast<std::size_t>(band) * static_cast<std::size_t>(rowBytes));
    for (int top = 0; top < m_height; top += band)
    {
        const int count = std::min(band, m_height - top);
        for (int i = 0; i < count; ++i)
            std::memcpy(rows.data() + static_cast<std::ptrdiff_t>(i) * rowBytes,
                        shown.GetPixelFast(0, top + i), static_cast<std::size_t>(rowBytes));
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_context,
                      static_cast<std::uint16_t>(m_width), static_cast<std::uint16_t>(count), 0,
                      static_cast<std::int16_t>(top), 0, m_depth,
                      static_cast<std::uint32_t>(count * rowBytes), rows.data());
    }
    xcb_flush(connection);
}

} // namespace

void ShowPicture(const CWinDib& picture, const char* title, double seconds)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end =
        Clock::now() + std::chrono::milliseconds(static_cast<long long>(seconds * 1000.0));
    Window window(picture, title);
    while (window.HandleEvents())
    {
        int milliseconds = -1;
        if (seconds > 0.0)
        {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
            if (left <= 0)
                return;
            milliseconds = static_cast<int>(std::min<long long>(left, 60000));
        }
        window.Wait(milliseconds);
    }
}
