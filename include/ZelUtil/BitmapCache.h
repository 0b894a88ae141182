#pragma once

#include "ZelUtil/StdStr.h"
#include "ZelUtil/TarvexDib.h"

#include <cstdint>
#include <map>

/// One cached file. The entry owns its image and deletes it.
struct ZELUTIL_API BitmapCacheEntry
{
    BitmapCacheEntry(CTarvexDib* image, const CStdStr<char>& name);
    ~BitmapCacheEntry();
    BitmapCacheEntry(const BitmapCacheEntry&) = delete;
    BitmapCacheEntry& operator=(const BitmapCacheEntry&) = delete;

    CTarvexDib* bitmap;
    std::uint32_t refCount; ///< outstanding references, at least 1 while the entry is in the cache
    CStdStr<char> fileName;
};

/// Shares one image per BMP file name between several users.
///
/// The key is the name exactly as it is passed: "a.bmp", "A.BMP" and "./a.bmp" are three keys with three
/// images. All users of a name get the same image and may change it; each sees the changes of the others. The
/// cache owns the images: callers never delete one. Each successful getBitmap or increaseRefCount must be
/// matched by one releaseBitmap, by name or by image. A pointer is valid until its reference count falls to 0
/// or the cache is destroyed.
///
/// For an unknown name, an unknown image and null the result is false, and the cache is unchanged. The cache
/// has no lock: only one thread at a time may use it.
class ZELUTIL_API BitmapCache
{
public:
    BitmapCache();

    /// Destroys every image that the cache still holds.
    ~BitmapCache();

    BitmapCache(const BitmapCache&) = delete;
    BitmapCache& operator=(const BitmapCache&) = delete;

    ZELUTIL_CONST_RESULTS_BEGIN
    /// Returns the image of the name and adds one reference to it. If the cache does not hold the image, it
    /// is loaded by CTarvexDib::Load(path). Null if it cannot be loaded; this is not remembered, so the next
    /// call tries again. If the cache holds the image, the call costs no file access and, apart from the copy
    /// of the name that is passed, no allocation. If memory for the cache's own records runs out, throws
    /// std::bad_alloc and leaves the cache as it was.
    CTarvexDib* const getBitmap(CStdStr<char> fileName);
    ZELUTIL_CONST_RESULTS_END

    /// Adds one reference to an image of this cache. Searches all entries.
    bool increaseRefCount(const CTarvexDib* const bitmap);

    /// Removes one reference; removing the last one destroys the image, and the next getBitmap of its name
    /// reads the file again. The form that takes an image searches all entries.
    bool releaseBitmap(CStdStr<char> fileName);
    bool releaseBitmap(CTarvexDib* const bitmap);

private:
    using Bitmaps = std::map<CStdStr<char>, BitmapCacheEntry*>;

    Bitmaps::iterator FindImage(const CTarvexDib* bitmap);
    bool Release(Bitmaps::iterator position);

    Bitmaps m_bitmaps;
};
