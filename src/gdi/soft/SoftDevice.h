#pragma once

#include "ZelUtil/SoftGdi.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <variant>
#include <vector>

/// The device behind the graphics calls of SoftGdi.h: its objects, their handles and their colours.
namespace zel::soft
{

using Colors = std::vector<PALETTEENTRY>;

/// A pixel of 32 bits has blue in its lowest byte, then green, red and the fourth byte.
inline constexpr std::uint32_t kWhite = 0x00FFFFFF;

struct Bitmap
{
    int width;
    int height;
    int depth;
    std::vector<std::uint32_t> pixels; ///< bottom row first; indices at 8 bits, black or white at 1 bit
    HDC selectedIn = nullptr;          ///< always null for the stock bitmap, which all contexts share
    bool deleted = false;              ///< by the caller, but it lives until it is deselected

    std::size_t RowStart(int y) const
    {
        return static_cast<std::size_t>(height - 1 - y) * static_cast<std::size_t>(width);
    }
    std::uint32_t* Row(int y) { return &pixels[RowStart(y)]; }
    const std::uint32_t* Row(int y) const { return &pixels[RowStart(y)]; }
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
    std::shared_ptr<const Colors>
        colors; ///< outlives a deleted palette; null while the default one is selected
    int stretchMode = BLACKONWHITE;
};

/// Holds every object in a numbered slot. A handle is made of the slot's number and its generation, which
/// changes when the object is removed, so that stale handles are recognised.
class HandleTable
{
public:
    using Object = std::variant<std::monostate, Bitmap, Palette, Context>;

    /// Returns null when the table is full. May throw std::bad_alloc, with nothing changed.
    HGDIOBJ Add(Object object)
    {
        std::uint32_t slot = m_firstFree;
        if (m_freeCount != 0)
        {
            m_firstFree = m_slots[slot].nextFree;
            --m_freeCount;
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

    /// Returns null unless the handle is that of a living object of this type.
    template <typename Type>
    Type* Find(const void* handle)
    {
        const std::size_t slot = SlotOf(handle);
        if (slot >= m_slots.size() || HandleOf(static_cast<std::uint32_t>(slot)) != handle)
            return nullptr;
        return std::get_if<Type>(&m_slots[slot].object);
    }

    /// The handle must be that of a living object.
    void Remove(const void* handle)
    {
        const auto slot = static_cast<std::uint32_t>(SlotOf(handle));
        m_slots[slot].object = std::monostate();
        ++m_slots[slot].generation;
        // Free slots form a queue, so that it takes as long as possible until a slot is used again.
        if (m_freeCount == 0)
            m_firstFree = slot;
        else
            m_slots[m_lastFree].nextFree = slot;
        m_lastFree = slot;
        ++m_freeCount;
    }

private:
    static constexpr std::size_t kMaxObjects = 65000;
    static constexpr std::size_t kFirstNumber = 16; // the lowest handle: none is null or a small integer

    struct Slot
    {
        Object object;
        std::uint32_t generation = 0;
        std::uint32_t nextFree = 0;
    };

    /// Returns the slot number. A number below kFirstNumber wraps to a huge value, which Find rejects.
    static std::size_t SlotOf(const void* handle)
    {
        return (reinterpret_cast<std::uintptr_t>(handle) & 0xFFFF) - kFirstNumber;
    }

    HGDIOBJ HandleOf(std::uint32_t slot) const
    {
        return reinterpret_cast<HGDIOBJ>(std::uintptr_t{m_slots[slot].generation} << 16 |
                                         (slot + kFirstNumber));
    }

    std::vector<Slot> m_slots;
    std::uint32_t m_firstFree = 0, m_lastFree = 0, m_freeCount = 0;
};

struct Screen
{
    int width = 1024;
    int height = 768;
    int depth = 32;
    Colors colors; ///< empty unless this is a palette device
};

struct Device
{
    std::mutex mutex;
    HandleTable objects;
    Screen screen;
    HBITMAP stockBitmap = nullptr; ///< null, like defaultPalette, until its allocation has succeeded
    HPALETTE defaultPalette = nullptr;
};

/// Exclusive access to the device for as long as this object lives.
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

    /// The colours of the indices in 8-bit bitmaps: those of the screen, or of the default palette when the
    /// screen has none.
    const Colors& ScreenColors() const
    {
        return m_device.screen.colors.empty()
                   ? *m_device.objects.Find<Palette>(m_device.defaultPalette)->colors
                   : m_device.screen.colors;
    }

    /// The bitmap that drawing changes, or null for the screen, where drawing is discarded.
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

/// The pixels that the indices of an 8-bit bitmap stand for; black beyond the last colour.
struct ColorTable
{
    explicit ColorTable(const Colors& colors);

    std::uint32_t pixels[256] = {};
};

/// Converts pixels of 32 bits to what a bitmap of this depth stores, as drawing does: at 1 bit only white
/// becomes white, at 8 bits the nearest of the screen's colours is chosen.
class StoredFormat
{
public:
    StoredFormat(const Screen& screen, int depth);

    void Convert(std::uint32_t* pixels, int count);

private:
    static constexpr int kPlaceBits = 12;

    const Colors& m_colors;
    int m_depth;
    std::uint32_t m_found[1 << kPlaceBits]; ///< the latest colours, each times 256, plus their indices
};

/// Black or white, whichever is nearer in brightness: how SetPixel and CreateDIBitmap convert to 1 bit.
std::uint32_t NearestBlackOrWhite(std::uint32_t pixel);

/// Adds a bitmap of zero pixels; negative extents count by their absolute value. Returns the stock bitmap if
/// an extent is 0, null if the extents are too large or memory or handles run out.
HBITMAP AddBitmap(const LockedDevice& device, std::int64_t width, std::int64_t height, int depth);

} // namespace zel::soft
