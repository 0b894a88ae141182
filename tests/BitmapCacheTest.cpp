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
    CTarvexDib *const image = cache.getBitmap(map), *const other = cache.getBitmap(sameFile);
    ASSERT_TRUE(image != nullptr && other != nullptr && other != image); // names are keys as they are passed
    ASSERT_TRUE(RandomPicture(5, 2, 24).Save(map.c_str()));
    EXPECT_TRUE(cache.getBitmap(map) == image && cache.increaseRefCount(image)); // not read again

    for (CTarvexDib* const unknown : {&stranger, static_cast<CTarvexDib*>(nullptr)})
        EXPECT_FALSE(cache.increaseRefCount(unknown) || cache.releaseBitmap(unknown));
    EXPECT_FALSE(cache.releaseBitmap("never loaded"));
    EXPECT_TRUE(cache.releaseBitmap(map) && cache.releaseBitmap(image));
    EXPECT_EQ(image->Width(), 3); // one reference is left
    EXPECT_TRUE(cache.releaseBitmap(image));
    EXPECT_FALSE(cache.releaseBitmap(map) || cache.releaseBitmap(image) || cache.increaseRefCount(image));
    ASSERT_NE(cache.getBitmap(map), nullptr);
    EXPECT_EQ(cache.getBitmap(map)->Width(), 5);
} // the leak check sees that the cache destroys what it still holds
