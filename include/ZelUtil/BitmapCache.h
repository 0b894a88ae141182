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
/// A name is a key exactly as it is passed: "a.bmp", "A.BMP" and "./a.bmp" are three keys and three images.
/// Every holder of a name gets the same image and may change it; all see the change. The images stay the
/// cache's: callers never delete one. Each successful getBitmap and increaseRefCount obliges to one
/// releaseBitmap, by name or by image. A pointer is valid until the release that brings its count to zero,
/// or until the cache is destroyed.
///
/// Unknown names and images and null give false, with the cache unchanged. The cache has no lock, so one
/// thread uses it at a time.
class ZELUTIL_API BitmapCache
{
public:
    BitmapCache();

    /// Destroys every image that is still held.
    ~BitmapCache();

    BitmapCache(const BitmapCache&) = delete;
    BitmapCache& operator=(const BitmapCache&) = delete;

    ZELUTIL_CONST_RESULTS_BEGIN
    /// The image of the name, loaded with CTarvexDib::Load(path) where the cache does not hold it. Null where
    /// it cannot be loaded; that is not remembered, so the next call tries again. A hit costs no file access
    /// and, apart from the name as it is passed, no allocation. Where memory for the cache's own records runs
    /// out, std::bad_alloc leaves the cache as it was.
    CTarvexDib* const getBitmap(CStdStr<char> fileName);
    ZELUTIL_CONST_RESULTS_END

    /// One more reference to an image of this cache. Walks the entries.
    bool increaseRefCount(const CTarvexDib* const bitmap);

    /// One reference less; the last one destroys the image. The next getBitmap of the name reads the file
    /// afresh. The form that takes an image walks the entries.
    bool releaseBitmap(CStdStr<char> fileName);
    bool releaseBitmap(CTarvexDib* const bitmap);

private:
    using Bitmaps = std::map<CStdStr<char>, BitmapCacheEntry*>;

    Bitmaps::iterator FindImage(const CTarvexDib* bitmap);
    bool Release(Bitmaps::iterator position);

    Bitmaps m_bitmaps;
};
