#include "ZelUtil/BitmapCache.h"

#include <algorithm>
#include <memory>

BitmapCacheEntry::BitmapCacheEntry(CTarvexDib* image, const CStdStr<char>& name)
    : bitmap(image), refCount(1), fileName(name)
{
}

BitmapCacheEntry::~BitmapCacheEntry()
{
    delete bitmap;
}

BitmapCache::BitmapCache() = default;

BitmapCache::~BitmapCache()
{
    for (const auto& [name, entry] : m_bitmaps)
        delete entry;
}

CTarvexDib* const BitmapCache::getBitmap(CStdStr<char> fileName)
{
    const auto known = m_bitmaps.find(fileName);
    if (known != m_bitmaps.end())
    {
        ++known->second->refCount;
        return known->second->bitmap;
    }

    auto image = std::make_unique<CTarvexDib>();
    if (!image->Load(fileName.c_str()))
        return nullptr;

    auto entry = std::make_unique<BitmapCacheEntry>(image.get(), fileName);
    static_cast<void>(image.release()); // the entry has it
    m_bitmaps.emplace(fileName, entry.get());
    return entry.release()->bitmap;
}

bool BitmapCache::increaseRefCount(const CTarvexDib* const bitmap)
{
    const auto position = FindImage(bitmap);
    if (position == m_bitmaps.end())
        return false;

    ++position->second->refCount;
    return true;
}

bool BitmapCache::releaseBitmap(CStdStr<char> fileName)
{
    return Release(m_bitmaps.find(fileName));
}

bool BitmapCache::releaseBitmap(CTarvexDib* const bitmap)
{
    return Release(FindImage(bitmap));
}

// No entry has a null image, so null is never found.
BitmapCache::Bitmaps::iterator BitmapCache::FindImage(const CTarvexDib* bitmap)
{
    return std::find_if(m_bitmaps.begin(), m_bitmaps.end(),
                        [bitmap](const auto& item) { return item.second->bitmap == bitmap; });
}

bool BitmapCache::Release(Bitmaps::iterator position)
{
    if (position == m_bitmaps.end())
        return false;

    if (--position->second->refCount == 0)
    {
        delete position->second;
        m_bitmaps.erase(position);
    }
    return true;
}
