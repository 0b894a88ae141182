#include "system/Platform.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace zel
{

namespace
{

// The property in which window managers tell the widths of a window's frame: left, right, top, bottom.
constexpr const char* kFrameExtents = "_NET_FRAME_EXTENTS";
constexpr std::uint32_t kLargestExtent = 32767;

struct Free
{
    void operator()(void* block) const { std::free(block); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

template <typename Reply>
Owned<Reply> Own(Reply* reply)
{
    return Owned<Reply>(reply);
}

// A connection to the display that lasts for one question. It may have failed.
class Display
{
public:
    Display() : m_connection(xcb_connect(nullptr, nullptr)) {}
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display() { xcb_disconnect(m_connection); }

    xcb_connection_t* Connection() const { return m_connection; }
    bool Failed() const { return xcb_connection_has_error(m_connection) != 0; }

private:
    xcb_connection_t* m_connection; // never null
};

xcb_window_t Handle(const unsigned char* window)
{
    xcb_window_t handle;
    std::memcpy(&handle, window, sizeof handle);
    return handle;
}

// Adds the frame that the window manager says it has put around the window. Implausible values are ignored.
void AddFrame(xcb_connection_t* connection, xcb_window_t window, Extent& extent)
{
    const auto name = xcb_intern_atom(connection, true,
                                      static_cast<std::uint16_t>(std::strlen(kFrameExtents)), kFrameExtents);
    const auto atom = Own(xcb_intern_atom_reply(connection, name, nullptr));
    if (atom == nullptr || atom->atom == XCB_ATOM_NONE)
        return;

    const auto request = xcb_get_property(connection, false, window, atom->atom, XCB_ATOM_CARDINAL, 0, 4);
    const auto property = Own(xcb_get_property_reply(connection, request, nullptr));
    std::uint32_t sides[4];
    if (property == nullptr || property->format != 32 ||
        xcb_get_property_value_length(property.get()) != static_cast<int>(sizeof sides))
        return;

    std::memcpy(sides, xcb_get_property_value(property.get()), sizeof sides);
    for (const std::uint32_t side : sides)
        if (side > kLargestExtent)
            return;
    extent.width += sides[0] + sides[1];
    extent.height += sides[2] + sides[3];
}

// Asks for attributes, which only windows have; pixmaps also have a geometry.
bool Exists(xcb_connection_t* connection, xcb_window_t window)
{
    const auto request = xcb_get_window_attributes(connection, window);
    return Own(xcb_get_window_attributes_reply(connection, request, nullptr)) != nullptr;
}

std::optional<Extent> Measure(const unsigned char* window, bool withFrame)
{
    const Display display;
    if (display.Failed() || !Exists(display.Connection(), Handle(window)))
        return std::nullopt;

    const auto request = xcb_get_geometry(display.Connection(), Handle(window));
    const auto geometry = Own(xcb_get_geometry_reply(display.Connection(), request, nullptr));
    if (geometry == nullptr)
        return std::nullopt;

    Extent extent{geometry->width, geometry->height};
    if (withFrame)
    {
        extent.width += 2UL * geometry->border_width;
        extent.height += 2UL * geometry->border_width;
        AddFrame(display.Connection(), Handle(window), extent);
    }
    return extent;
}

} // namespace

bool WindowExists(const unsigned char* window)
{
    const Display display;
    return !display.Failed() && Exists(display.Connection(), Handle(window));
}

std::optional<Extent> WindowExtent(const unsigned char* window)
{
    return Measure(window, true);
}

std::optional<Extent> ClientExtent(const unsigned char* window)
{
    return Measure(window, false);
}

} // namespace zel
