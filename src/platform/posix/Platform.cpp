#include "platform/Platform.h"

#include <memory>
#include <sys/stat.h>

namespace zel
{

std::FILE* OpenFile(const char* path, const char* mode)
{
    const char closeOnExec[] = {mode[0], mode[1], 'e', '\0'};
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, closeOnExec), std::fclose);
    struct stat status;
    const bool isFolder =
        file != nullptr && fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? nullptr : file.release();
}

std::string StringResource(unsigned)
{
    return {};
}

} // namespace zel
