#include "ZelUtil/BitmapCache.h"

#include "Pictures.h"

#include <gtest/gtest.h>

using namespace test;

TEST(BitmapCache, SharesOneImageUntilItsLastRelease)
{
    const TemporaryFolder folder;
    const std::string map = folder / "map.bmp", sameFile = folder / "./map.bmp";
    BitmapCache cache;
    CTarvexDib stranger = RandomPicture(3, 2, 24);
    EXPECT_EQ(cache.getBitmap(map), nullptr);
    ASSERT_TRUE(stranger.Save(map.c_str())); // a failure is not remembered
    CTarvexDib* const image = cache.getBitmap(map);
    ASSERT_NE(image, nullptr);
    CTarvexDib* const other = cache.getBitmap(sameFile); // names are keys as they are passed
    EXPECT_TRUE(other != nullptr && other != image);
    ASSERT_TRUE(RandomPicture(5, 2, 24).Save(map.c_str()));
    EXPECT_EQ(cache.getBitmap(map), image); // the file is not read again
    EXPECT_TRUE(cache.increaseRefCount(image));

    EXPECT_FALSE(cache.increaseRefCount(&stranger) || cache.increaseRefCount(nullptr));
    EXPECT_FALSE(cache.releaseBitmap(&stranger) || cache.releaseBitmap("never loaded"));
    EXPECT_FALSE(cache.releaseBitmap(static_cast<CTarvexDib*>(nullptr)));
    EXPECT_TRUE(cache.releaseBitmap(map) && cache.releaseBitmap(image));
    EXPECT_EQ(image->Width(), 3); // one reference is left
    EXPECT_TRUE(cache.releaseBitmap(image));
    EXPECT_FALSE(cache.releaseBitmap(map) || cache.releaseBitmap(image) || cache.increaseRefCount(image));
    CTarvexDib* const fresh = cache.getBitmap(map);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->Width(), 5);
} // the leak check sees that the cache destroys what it still holds
