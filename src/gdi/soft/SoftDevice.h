#pragma once

#include "ZelUtil/SoftGdi.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <variant>
#include <vector>

/// The device behind the graphics calls over memory: its objects, and their colours.
namespace zel
{

using Colors = std::vector<PALETTEENTRY>;

/// Pixels have blue, green, red and the fourth byte from their low end.
inline constexpr std::uint32_t kWhite = 0x00FFFFFF;

struct Bitmap
{
    int width;
    int height;
    int depth;
    std::vector<std::uint32_t> pixels; ///< from the top; at 8 bits indices, at 1 bit black or white
    HDC selectedIn = nullptr;          ///< of the stock bitmap always null
    bool deleted = false;              ///< but still selected

    std::uint32_t* Row(int y) { return pixels.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const std::uint32_t* Row(int y) const { return pixels.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

struct Palette
{
    std::shared_ptr<const Colors> colors;
};

struct Context
{
    bool isScreen;
    HBITMAP bitmap;
    HPALETTE palette;
    std::shared_ptr<const Colors> colors; ///< of the palette, which may be gone; null for the default one
    int stretchMode = BLACKONWHITE;
};

/// Every object has a slot; its handle is the slot's number and how often the slot was used before, so that a
/// handle ends with its object.
class Objects
{
public:
    using Object = std::variant<std::monostate, Bitmap, Palette, Context>;

    /// Null when there are too many.
    HGDIOBJ Add(Object object)
    {
        std::uint32_t slot = m_firstFree;
        if (m_free != 0)
        {
            m_firstFree = m_slots[slot].nextFree;
            --m_free;
        }
        else
        {
            if (m_slots.size() == kMaxObjects)
                return nullptr;
            slot = static_cast<std::uint32_t>(m_slots.size());
            m_slots.emplace_back();
        }
        m_slots[slot].object = std::move(object);
        return HandleOf(slot);
    }

    template <typename Type>
    Type* Find(const void* handle)
    {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        const std::size_t slot = (value & 0xFFFF) - kFirstNumber;
        if (slot >= m_slots.size() || HandleOf(static_cast<std::uint32_t>(slot)) != handle)
            return nullptr;
        return std::get_if<Type>(&m_slots[slot].object);
    }

    void Remove(const void* handle)
    {
        const auto slot =
            static_cast<std::uint32_t>((reinterpret_cast<std::uintptr_t>(handle) & 0xFFFF) - kFirstNumber);
        m_slots[slot].object = std::monostate();
        ++m_slots[slot].uses;
        // Slots wait in line, so that a handle comes again as late as possible.
        if (m_free == 0)
            m_firstFree = slot;
        else
            m_slots[m_lastFree].nextFree = slot;
        m_lastFree = slot;
        ++m_free;
    }

private:
    static constexpr std::size_t kMaxObjects = 65000;
    static constexpr std::size_t kFirstNumber = 16; // no handle is null or nearly so

    struct Slot
    {
        Object object;
        std::uint32_t uses = 0;
        std::uint32_t nextFree = 0;
    };

    HGDIOBJ HandleOf(std::uint32_t slot) const
    {
        return reinterpret_cast<HGDIOBJ>(std::uintptr_t{m_slots[slot].uses} << 16 | (slot + kFirstNumber));
    }

    std::vector<Slot> m_slots;
    std::uint32_t m_firstFree = 0, m_lastFree = 0, m_free = 0;
};

struct Screen
{
    int width = 1024;
    int height = 768;
    int depth = 32;
    Colors colors; ///< of a palette device
};

struct Device
{
    std::mutex mutex;
    Objects objects;
    Screen screen;
    HBITMAP stockBitmap = nullptr; ///< this and the next null only as long as there is no memory for them
    HPALETTE defaultPalette = nullptr;
};

/// The device, and the sole right to use it for as long as this object lives.
class LockedDevice
{
public:
    LockedDevice() : m_device(TheDevice()), m_lock(m_device.mutex)
    {
        if (m_device.defaultPalette == nullptr)
            AddStockObjects();
    }

    Device* operator->() const { return &m_device; }

    Context* FindContext(HDC dc) const { return m_device.objects.Find<Context>(dc); }
    Bitmap* FindBitmap(const void* bitmap) const { return m_device.objects.Find<Bitmap>(bitmap); }

    /// What indices stand for: the screen's colours, or the default ones where it needs none.
    const Colors& ScreenColors() const
    {
        return m_device.screen.colors.empty()
                   ? *m_device.objects.Find<Palette>(m_device.defaultPalette)->colors
                   : m_device.screen.colors;
    }

    /// Null on the screen, where nothing stays.
    Bitmap* Target(const Context& context) const
    {
        return context.isScreen ? nullptr : FindBitmap(context.bitmap);
    }

private:
    static Device& TheDevice();

    void AddStockObjects();

    Device& m_device;
    const std::lock_guard<std::mutex> m_lock;
};

/// The colour of an entry; black beyond the last.
std::uint32_t Color(const Colors& colors, std::uint32_t index);

/// What a bitmap of this depth stores for a pixel of 32 bits.
std::uint32_t Stored(const Screen& screen, int depth, std::uint32_t pixel);

/// The black or white that is nearer, where one pixel or a whole new bitmap is set.
std::uint32_t NearerOfTwo(std::uint32_t pixel);

/// Null where the extents are too large or memory runs out; the stock bitmap where one is 0.
HBITMAP AddBitmap(const LockedDevice& device, std::int64_t width, std::int64_t height, int depth);

} // namespace zel
