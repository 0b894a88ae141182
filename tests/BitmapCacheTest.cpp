#include "ZelUtil/BitmapCache.h"

#include "Pictures.h"

#include <gtest/gtest.h>
#include <type_traits>

using namespace test;

static_assert(!std::is_copy_constructible_v<BitmapCache> && !std::is_copy_assignable_v<BitmapCache>);

class BitmapCacheTest : public testing::Test
{
protected:
    void Write(const std::string& path, int width)
    {
        ASSERT_TRUE(RandomPicture(width, 2, 24).Save(path.c_str()));
    }

    TemporaryFolder m_folder;
    BitmapCache m_cache;
    const std::string m_map = m_folder / "map.bmp";
};

TEST_F(BitmapCacheTest, OneImageIsSharedUntilItsLastRelease)
{
    Write(m_map, 3);
    CTarvexDib* const image = m_cache.getBitmap(m_map);
    ASSERT_NE(image, nullptr);
    std::filesystem::remove(m_map);
    EXPECT_EQ(m_cache.getBitmap(m_map), image); // no file needed
    EXPECT_TRUE(m_cache.increaseRefCount(image));

    EXPECT_TRUE(m_cache.releaseBitmap(m_map));
    EXPECT_TRUE(m_cache.releaseBitmap(image));
    EXPECT_EQ(image->Width(), 3); // still one holder
    EXPECT_TRUE(m_cache.releaseBitmap(m_map));
    EXPECT_FALSE(m_cache.releaseBitmap(m_map));
    EXPECT_FALSE(m_cache.increaseRefCount(image));
    EXPECT_EQ(m_cache.getBitmap(m_map), nullptr);

    Write(m_map, 5); // a failure is not remembered, and the file is read afresh
    CTarvexDib* const fresh = m_cache.getBitmap(m_map);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->Width(), 5);
    EXPECT_TRUE(m_cache.releaseBitmap(fresh));
}

TEST_F(BitmapCacheTest, NamesAreKeysAsTheyArePassed)
{
    Write(m_map, 3);
    for (const std::string& otherName : {m_folder / "./map.bmp", m_folder / "MAP.bmp"})
    {
        Write(otherName, 3);
        CTarvexDib* const one = m_cache.getBitmap(m_map);
        CTarvexDib* const other = m_cache.getBitmap(otherName);
        ASSERT_TRUE(one != nullptr && other != nullptr);
        EXPECT_NE(one, other);
        EXPECT_TRUE(m_cache.releaseBitmap(one));
        EXPECT_FALSE(m_cache.releaseBitmap(m_map));
        EXPECT_TRUE(m_cache.releaseBitmap(otherName));
    }
}

TEST_F(BitmapCacheTest, StrangersAreRefused)
{
    WriteFile(m_map, {'B', 'M', 0, 0});
    EXPECT_EQ(m_cache.getBitmap(m_map), nullptr);
    EXPECT_EQ(m_cache.getBitmap(""), nullptr);
    CTarvexDib stranger;
    EXPECT_FALSE(m_cache.increaseRefCount(&stranger));
    EXPECT_FALSE(m_cache.increaseRefCount(nullptr));
    EXPECT_FALSE(m_cache.releaseBitmap(&stranger));
    EXPECT_FALSE(m_cache.releaseBitmap(static_cast<CTarvexDib*>(nullptr)));
    EXPECT_FALSE(m_cache.releaseBitmap("never loaded"));

    Write(m_map, 3); // what is still held goes with the cache; the leak check sees to it
    EXPECT_NE(m_cache.getBitmap(m_map), nullptr);
}
