#include <ZelUtil/ZelUtil.h>

#include <cstdio>

int main()
{
    const RGBColor orange(1.0F, 0.5F, 0.0F, 1.0F);
    std::printf("bytes %d %d %d\n", orange.redByte(), orange.greenByte(), orange.blueByte());

    const ZelBox box(0.0, 0.0, 4.0, 2.0);
    std::printf("inside: %d, on the edge: %d\n", box.containsVector({1.0, 1.0}, true),
                box.containsVector({0.0, 1.0}, true));
    std::printf("%.6f radians\n", degreeToRad(180.0));

    unsigned char bytes[16];
    char text[33];
    ZelId::create(); // the first identifier of a process is all zero
    ZelId::create().get(bytes);
    RBinToString(bytes, sizeof bytes, text);
    std::printf("%s\n", text);

    const CVar* const scale = CVar_Get("scale", "2.5", 0);
    std::printf("%s = %g, %u variable\n", scale->name.c_str(), scale->value, CVar_GetNb());

    CStdStr<char> path("maps/shore.bmp");
    std::printf("%s\n", path.Mid(path.ReverseFind('/') + 1).c_str());
    return 0;
}
