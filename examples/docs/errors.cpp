#include <ZelUtil/ZelUtil.h>

#include <cstdio>

int main()
{
    // A failure that a caller must expect returns false.
    CTarvexDib dib;
    std::printf("load: %s\n", dib.Load("missing.bmp") ? "true" : "false");
    std::printf("a depth of 12 bits: %s\n", dib.Create(4, 4, 12) ? "true" : "false");

    // Errors are thrown by value; EBaseException catches both families.
    try
    {
        CMatrix(2, 2)(2, 0) = 1.0;
    }
    catch (const BasicError& error)
    {
        std::printf("%s: %s\n", error.getMethode().c_str(), error.getMsg().c_str());
    }

    try
    {
        throw EFileAccess(EFileAccess::FILE_EMPTY);
    }
    catch (const EFileAccess& error)
    {
        std::printf("%s\n", error.getErrorText().c_str());
    }
    return 0;
}
