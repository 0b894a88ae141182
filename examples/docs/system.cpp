#include <ZelUtil/OSDependant.h>

#include <cstdio>
#include <memory>

int main()
{
    using Access = OSDependant::IFileAccess;
    const std::unique_ptr<Access> file(OSDependant::openFile("map.bmp", Access::LittleEndian));
    unsigned short type = 0;
    unsigned int length = 0;
    if (file == nullptr || !file->read(&type) || !file->read(&length))
        return 1;
    std::printf("%#x, %u bytes of %lu\n", type, length, file->getLength());

    // "" is the current folder.
    CStdStr<char>* names = nullptr;
    const unsigned long count = OSDependant::GetFileListInDirectory("", "map.*", &names);
    const std::unique_ptr<CStdStr<char>[]> owner(names);
    for (unsigned long i = 0; i < count; ++i)
        std::printf("%s\n", names[i].c_str());
    return 0;
}
