#include "system/Platform.h"

#include "system/FileNames.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
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

// The program's own path; empty if the system does not report it. If the program's file was deleted, the
// system appends " (deleted)", which is removed.
std::string ProgramPath()
{
    constexpr std::string_view kDeleted = " (deleted)";
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    std::string_view text(path, length < 0 ? 0 : static_cast<std::size_t>(length));
    if (text.ends_with(kDeleted))
        text.remove_suffix(kDeleted.size());
    return std::string(text);
}

const char* FileName(const char* path)
{
    const char* const separator = std::strrchr(path, '/');
    return separator == nullptr ? path : separator + 1;
}

// Finds loaded library number `index`, counting only those with this file name, and copies the name by which
// it was loaded. False if there are fewer. Names without a folder are skipped: they belong to the program,
// whose name is empty, and to what the system itself puts into every process.
bool LoadedName(const char* fileName, int index, char (&name)[PATH_MAX])
{
    struct Search
    {
        const char* fileName;
        int index;
        char* name;
    } search{fileName, index, name};

    return dl_iterate_phdr(
               [](dl_phdr_info* object, std::size_t, void* data)
               {
                   auto& wanted = *static_cast<Search*>(data);
                   const char* const loaded = object->dlpi_name;
                   if (std::strchr(loaded, '/') == nullptr || std::strlen(loaded) >= PATH_MAX ||
                       std::strcmp(FileName(loaded), wanted.fileName) != 0 || wanted.index-- != 0)
                       return 0;
                   std::strcpy(wanted.name, loaded);
                   return 1;
               },
               &search) != 0;
}

// The full path of a library, from the name by which it was loaded. A relative name is resolved by the
// loader, because the current folder may have changed.
std::string LibraryPath(const char* name)
{
    if (*name == '/')
        return name;
    void* const library = dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
    char origin[PATH_MAX];
    const bool known = library != nullptr && dlinfo(library, RTLD_DI_ORIGIN, origin) == 0;
    if (library != nullptr)
        dlclose(library);
    if (!known)
        return {};
    return (std::filesystem::path(origin) / FileName(name)).lexically_normal().string();
}

// Whether `module` is the handle of a loaded object. The loader's list of objects cannot change meanwhile,
// because the loader holds its lock during the callback.
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
    // Everybody may write to this folder. Whatever somebody has put there under the log's name must neither
    // lead elsewhere, as a link does, nor make the process wait, as a pipe does.
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
    const std::string wanted = SearchExpression(std::string_view(searchPath).substr(nameStart));
    folder.resize(nameStart);

    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.empty() ? "." : folder.c_str()),
                                                      closedir);
    std::vector<std::string> names;
    if (entries == nullptr)
        return names;
    while (const dirent* const entry = readdir(entries.get()))
        if (MatchesSearch(wanted, entry->d_name))
            names.push_back(entry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

const std::int32_t* UpperCaseTable()
{
#if defined(__GLIBC__)
    return *__ctype_toupper_loc();
#else
    return nullptr;
#endif
}

char* OpenLibrary(const char* name)
try
{
    // The empty name would mean the program itself.
    return *name == '\0' ? nullptr : static_cast<char*>(dlopen(name, RTLD_NOW | RTLD_LOCAL));
}
catch (...) // from a constructor in the library
{
    return nullptr;
}

bool CloseLibrary(char* module)
{
    return IsLoaded(module) && dlclose(module) == 0;
}

void* FindFunction(char* module, const char* name)
{
    if (!IsLoaded(module))
        return nullptr;

    // dlsym goes on to search the libraries that this one uses, so the owner of what it finds is compared.
    void* const function = dlsym(module, name);
    Dl_info info;
    link_map* owner = nullptr;
    const bool known = function != nullptr &&
                       dladdr1(function, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) != 0;
    return known && static_cast<void*>(owner) == module ? function : nullptr;
}

std::optional<std::string> ModulePath(const char* name)
{
    const char* const fileName = FileName(name);
    const auto isMeant = [&](const std::string& path)
    { return !path.empty() && (fileName == name ? path.substr(path.rfind('/') + 1) == name : path == name); };

    const std::string program = ProgramPath();
    if (isMeant(program))
        return program;
    char loaded[PATH_MAX];
    for (int i = 0; LoadedName(fileName, i, loaded); ++i)
        if (const std::string path = LibraryPath(loaded); isMeant(path))
            return path;
    return std::nullopt;
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
        static_cast<void>(start.release()); // the thread deletes it
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
    tzset(); // the time zone may have changed
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    return local;
}

} // namespace zel
