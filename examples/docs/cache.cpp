#include <ZelUtil/BitmapCache.h>

#include <cstdio>

int main()
{
    BitmapCache cache;
    CTarvexDib* const first = cache.getBitmap("map.bmp");
    CTarvexDib* const second = cache.getBitmap("map.bmp");  // no second look at the file
    CTarvexDib* const other = cache.getBitmap("./map.bmp"); // another name is another image
    if (first == nullptr || other == nullptr)
        return 1;
    std::printf("same image: %s, %s\n", first == second ? "yes" : "no", first == other ? "yes" : "no");

    cache.releaseBitmap(second);
    cache.releaseBitmap("map.bmp"); // the last one: first and second are gone
    std::printf("once more: %s\n", cache.releaseBitmap("map.bmp") ? "true" : "false");
    return 0; // the cache destroys what is left
}
