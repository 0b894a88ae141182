#include "platform/Platform.h"

#include "platform/posix/SearchPattern.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <memory>
#include <new>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zel
{

namespace
{

constexpr const char* kLogFile = "/var/tmp/Palmora.log";

bool IsOfType(int descriptor, mode_t type)
{
    struct stat status;
    return fstat(descriptor, &status) == 0 && (status.st_mode & S_IFMT) == type;
}

// What `path` names, links resolved; empty where there is nothing.
std::string RealPath(const char* path)
{
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path, nullptr), std::free);
    return real == nullptr ? std::string() : std::string(real.get());
}

const char* FileName(const char* path)
{
    const char* const separator = std::strrchr(path, '/');
    return separator == nullptr ? path : separator + 1;
}

// Whether a handle is that of a loaded object. The loader holds its lock while it calls back, so that the
// list of objects stays as it is meanwhile.
bool IsLoaded(const void* module)
{
    struct Search
    {
        const void* module;
        bool found;
    } search{module, false};

    dl_iterate_phdr(
        [](dl_phdr_info*, std::size_t, void* data)
        {
            auto& wanted = *static_cast<Search*>(data);
            for (const link_map* object = _r_debug.r_map; object != nullptr; object = object->l_next)
                wanted.found = wanted.found || object == wanted.module;
            return 1;
        },
        &search);
    return search.found;
}

struct Start
{
    ThreadRoutine routine;
    void* argument;
};

void* RunThread(void* data)
{
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(data));
    return reinterpret_cast<void*>(start.routine(start.argument));
}

} // namespace

std::FILE* OpenFile(const char* path, const char* mode)
{
    const char closeOnExec[] = {mode[0], mode[1], 'e', '\0'};
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, closeOnExec), std::fclose);
    const bool isFolder = file != nullptr && IsOfType(fileno(file.get()), S_IFDIR);
    return isFolder ? nullptr : file.release();
}

std::FILE* OpenLogFile()
{
    // Everybody may write to the folder: nothing that stands there under the log's name leads elsewhere, or
    // makes the process wait.
    const int descriptor =
        open(kLogFile, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0666);
    if (descriptor < 0)
        return nullptr;

    std::FILE* const file = IsOfType(descriptor, S_IFREG) ? fdopen(descriptor, "a") : nullptr;
    if (file == nullptr)
        close(descriptor);
    return file;
}

bool Seek(std::FILE* file, std::int64_t offset, int origin)
{
    return fseeko(file, offset, origin) == 0;
}

std::int64_t Tell(std::FILE* file)
{
    return ftello(file);
}

std::int64_t FileLength(std::FILE* file)
{
    struct stat status;
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

bool MakeDirectory(const char* path)
{
    return mkdir(path, 0777) == 0;
}

std::vector<std::string> FindFiles(const std::string& searchPath)
{
    std::string folder = searchPath;
    std::replace(folder.begin(), folder.end(), '\\', '/');
    const std::size_t nameStart = folder.rfind('/') + 1; // 0 where there is no separator
    const SearchPattern pattern(std::string_view(searchPath).substr(nameStart));
    folder.resize(nameStart);

    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.empty() ? "." : folder.c_str()),
                                                      closedir);
    std::vector<std::string> names;
    if (entries == nullptr)
        return names;
    while (const dirent* const entry = readdir(entries.get()))
        if (pattern.Matches(entry->d_name))
            names.push_back(entry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

char* OpenLibrary(const char* name)
{
    // The empty name would be the program itself.
    return *name == '\0' ? nullptr : static_cast<char*>(dlopen(name, RTLD_NOW | RTLD_LOCAL));
}

bool CloseLibrary(char* module)
{
    return IsLoaded(module) && dlclose(module) == 0;
}

void* FindFunction(char* module, const char* name)
{
    if (!IsLoaded(module))
        return nullptr;

    // The search goes on in the libraries that this one uses.
    void* const function = dlsym(module, name);
    Dl_info info;
    link_map* owner = nullptr;
    const bool known = function != nullptr &&
                       dladdr1(function, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) != 0;
    return known && static_cast<void*>(owner) == module ? function : nullptr;
}

std::optional<std::string> ModulePath(const char* name)
{
    const std::string program = RealPath("/proc/self/exe");
    struct Search
    {
        const char* name;
        const char* program;
        char path[PATH_MAX];
    } search{name, program.c_str(), ""};

    // The program comes without a name, and what the system itself puts into a process without a folder.
    dl_iterate_phdr(
        [](dl_phdr_info* object, std::size_t, void* data)
        {
            auto& wanted = *static_cast<Search*>(data);
            const char* const path = *object->dlpi_name == '\0' ? wanted.program : object->dlpi_name;
            if (std::strchr(path, '/') == nullptr || std::strlen(path) >= sizeof wanted.path ||
                (std::strcmp(wanted.name, path) != 0 && std::strcmp(wanted.name, FileName(path)) != 0))
                return 0;
            std::strcpy(wanted.path, path);
            return 1;
        },
        &search);
    const std::string path = *search.path == '/' ? search.path : RealPath(search.path);
    return path.empty() ? std::nullopt : std::optional(path);
}

std::string StringResource(unsigned)
{
    return {};
}

unsigned long StartThread(ThreadRoutine routine, void* argument)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return 0;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);

    std::unique_ptr<Start> start(new (std::nothrow) Start{routine, argument});
    pthread_t thread = 0;
    const bool started =
        start != nullptr && pthread_create(&thread, &attributes, RunThread, start.get()) == 0;
    if (started)
        start.release();
    pthread_attr_destroy(&attributes);
    return started ? thread : 0;
}

void SleepFor(unsigned long milliseconds)
{
    timespec left{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000000)};
    while (nanosleep(&left, &left) != 0 && errno == EINTR)
    {
    }
}

std::tm LocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    return local;
}

} // namespace zel
