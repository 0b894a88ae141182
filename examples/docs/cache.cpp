#include <ZelUtil/BitmapCache.h>

#include <cstdio>

int main()
{
    BitmapCache cache;
    CTarvexDib* const first = cache.getBitmap("map.bmp");
    CTarvexDib* const second = cache.getBitmap("map.bmp");  // does not read the file again
    CTarvexDib* const other = cache.getBitmap("./map.bmp"); // another name, another image
    if (first == nullptr || other == nullptr)
        return 1;
    std::printf("same image: %s, %s\n", first == second ? "yes" : "no", first == other ? "yes" : "no");

    cache.releaseBitmap(second);
    cache.releaseBitmap("map.bmp"); // the last reference: first and second are invalid now
    std::printf("once more: %s\n", cache.releaseBitmap("map.bmp") ? "true" : "false");
    return 0; // the cache destroys the images it still holds
}
