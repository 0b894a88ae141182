#include "system/Platform.h"

#include <cstring>
#include <io.h>
#include <memory>
#include <new>
#include <windows.h>

namespace zel
{

namespace
{

constexpr const char* kLogFile = "C:\\Palmora.log";

HANDLE SystemHandle(std::FILE* file)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
}

HWND Handle(const unsigned char* window)
{
    HWND handle;
    std::memcpy(&handle, window, sizeof handle);
    return handle;
}

HMODULE Module(char* module)
{
    return reinterpret_cast<HMODULE>(module);
}

Extent ExtentOf(const RECT& rectangle)
{
    return {static_cast<unsigned long>(rectangle.right - rectangle.left),
            static_cast<unsigned long>(rectangle.bottom - rectangle.top)};
}

struct Start
{
    ThreadRoutine routine;
    void* argument;
};

// In the calling convention that the system expects, which on 32 bits is not that of `routine`.
DWORD WINAPI RunThread(void* data)
{
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(data));
    return start.routine(start.argument);
}

// Fetches a text by `fill`, which cuts it to the buffer's size and returns its length. Repeats that with
// larger buffers until the length shows that nothing was cut.
template <typename Fill>
std::string TextOf(const Fill& fill)
{
    std::string text;
    std::size_t length = 0;
    do
    {
        text.resize(2 * text.size() + 256);
        length = static_cast<std::size_t>(fill(text.data(), static_cast<int>(text.size())));
    } while (length >= text.size() - 1);
    text.resize(length);
    return text;
}

} // namespace

std::FILE* OpenFile(const char* path, const char* mode)
{
    const char notInherited[] = {mode[0], mode[1], 'N', '\0'};
    return std::fopen(path, notInherited);
}

std::FILE* OpenLogFile()
{
    return std::fopen(kLogFile, "atN");
}

bool Seek(std::FILE* file, std::int64_t offset, int origin)
{
    return _fseeki64(file, offset, origin) == 0;
}

std::int64_t Tell(std::FILE* file)
{
    return _ftelli64(file);
}

std::int64_t FileLength(std::FILE* file)
{
    return GetFileType(SystemHandle(file)) == FILE_TYPE_DISK ? _filelengthi64(_fileno(file)) : -1;
}

bool MakeDirectory(const char* path)
{
    return CreateDirectoryA(path, nullptr) != 0;
}

std::vector<std::string> FindFiles(const std::string& searchPath)
{
    std::vector<std::string> names;
    WIN32_FIND_DATAA entry;
    const HANDLE handle = FindFirstFileA(searchPath.c_str(), &entry);
    if (handle == INVALID_HANDLE_VALUE)
        return names;

    const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> search(handle, FindClose);
    do
        names.emplace_back(entry.cFileName);
    while (FindNextFileA(handle, &entry) != 0);
    return names;
}

bool WindowExists(const unsigned char* window)
{
    return IsWindow(Handle(window)) != 0;
}

std::optional<Extent> WindowExtent(const unsigned char* window)
{
    RECT rectangle;
    if (!WindowExists(window) || GetWindowRect(Handle(window), &rectangle) == 0)
        return std::nullopt;
    return ExtentOf(rectangle);
}

std::optional<Extent> ClientExtent(const unsigned char* window)
{
    RECT rectangle;
    if (GetClientRect(Handle(window), &rectangle) == 0)
        return std::nullopt;
    return ExtentOf(rectangle);
}

const std::int32_t* UpperCaseTable()
{
    return nullptr;
}

char* OpenLibrary(const char* name)
{
    return reinterpret_cast<char*>(LoadLibraryA(name));
}

bool CloseLibrary(char* module)
{
    return FreeLibrary(Module(module)) != 0;
}

void* FindFunction(char* module, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(Module(module), name));
}

std::optional<std::string> ModulePath(const char* name)
{
    const HMODULE module = GetModuleHandleA(name);
    if (module == nullptr)
        return std::nullopt;
    return TextOf([module](char* text, int size)
                  { return GetModuleFileNameA(module, text, static_cast<DWORD>(size)); });
}

std::string StringResource(unsigned identifier)
{
    return TextOf([identifier](char* text, int size)
                  { return LoadStringA(GetModuleHandleA(nullptr), identifier, text, size); });
}

unsigned long StartThread(ThreadRoutine routine, void* argument)
{
    std::unique_ptr<Start> start(new (std::nothrow) Start{routine, argument});
    if (start == nullptr)
        return 0;

    DWORD identifier = 0;
    const HANDLE thread = CreateThread(nullptr, 0, RunThread, start.get(), 0, &identifier);
    if (thread == nullptr)
        return 0;
    start.release();
    CloseHandle(thread);
    return identifier;
}

void SleepFor(unsigned long milliseconds)
{
    Sleep(milliseconds);
}

std::tm LocalTime()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::tm local = {};
    local.tm_sec = now.wSecond;
    local.tm_min = now.wMinute;
    local.tm_hour = now.wHour;
    local.tm_mday = now.wDay;
    local.tm_mon = now.wMonth - 1;
    local.tm_year = now.wYear - 1900;
    return local;
}

} // namespace zel
