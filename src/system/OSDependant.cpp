#include "ZelUtil/OSDependant.h"

#include "system/FileNames.h"
#include "system/Platform.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace OSDependant
{

namespace
{

// 0 if the position is unknown (negative) or does not fit.
unsigned long ToUnsignedLong(std::int64_t position)
{
    const bool fits =
        position >= 0 && static_cast<std::uint64_t>(position) <= std::numeric_limits<unsigned long>::max();
    return fits ? static_cast<unsigned long>(position) : 0;
}

class FileAccess : public IFileAccess
{
public:
    FileAccess(const char* fileName, FileInterpretationModes mode)
        : m_file(zel::OpenFile(fileName, "rb")), m_mode(mode)
    {
    }

    FileAccess(const FileAccess&) = delete;
    FileAccess& operator=(const FileAccess&) = delete;

    ~FileAccess() override
    {
        if (m_file != nullptr)
            std::fclose(m_file);
    }

    FileInterpretationModes getInterpretationMode() override { return m_mode; }
    void setInterpretationMode(FileInterpretationModes mode) override { m_mode = mode; }

    bool skip(long offset) override
    {
        constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
        // Checked beforehand, because on some systems a failed seek loses the position.
        const std::int64_t position = m_file == nullptr ? -1 : zel::Tell(m_file);
        return position >= 0 && offset >= -position && offset <= kMost - position &&
               zel::Seek(m_file, offset, SEEK_CUR);
    }

    unsigned long getPosition() override { return m_file == nullptr ? 0 : ToUnsignedLong(zel::Tell(m_file)); }

    unsigned long getLength() override
    {
        const std::int64_t position = m_file == nullptr ? -1 : zel::Tell(m_file);
        if (position < 0 || !zel::Seek(m_file, 0, SEEK_END))
            return 0;
        const std::int64_t length = zel::Tell(m_file);
        zel::Seek(m_file, position, SEEK_SET);
        return ToUnsignedLong(length);
    }

    bool read(double* value) override { return ReadBytes(value, sizeof *value); }
    bool read(int* value) override { return ReadOrdered(value); }
    bool read(unsigned int* value) override { return ReadOrdered(value); }
    bool read(float* value) override { return ReadOrdered(value); }
    bool read(short* value) override { return ReadOrdered(value); }
    bool read(unsigned short* value) override { return ReadOrdered(value); }
    bool read(char* value) override { return ReadBytes(value, sizeof *value); }
    bool read(unsigned char* value) override { return ReadBytes(value, sizeof *value); }
    bool read(void* buffer, unsigned long count) override { return ReadBytes(buffer, count); }

private:
    bool ReadBytes(void* to, std::size_t count)
    {
        return m_file != nullptr && std::fread(to, 1, count, m_file) == count;
    }

    template <typename Value>
    bool ReadOrdered(Value* value)
    {
        static_assert(sizeof(Value) == 2 || sizeof(Value) == 4);
        if (!ReadBytes(value, sizeof *value))
            return false;
        auto* const bytes = reinterpret_cast<unsigned char*>(value);
        if (m_mode == BigEndian)
            std::reverse(bytes, bytes + sizeof *value);
        return true;
    }

    std::FILE* m_file; // owned; null if the file could not be opened
    FileInterpretationModes m_mode;
};

// The names that GetFileListInDirectory delivers.
std::vector<std::string> MatchingNames(const CStdStr<char>& directory, const CStdStr<char>& pattern)
{
    std::string searchPath = directory.c_str();
    if (!searchPath.empty() && searchPath.back() != '\\')
        searchPath += '\\';
    searchPath += pattern.c_str();

    const std::string_view wanted = zel::Extension(pattern.c_str());
    std::vector<std::string> names = zel::FindFiles(searchPath);
    std::erase_if(names,
                  [wanted](const std::string& name)
                  {
                      return name == "." || name == ".." ||
                             (!wanted.empty() && !zel::MatchesExtension(wanted, zel::Extension(name)));
                  });
    return names;
}

bool Deliver(const std::optional<zel::Extent>& extent, unsigned long& width, unsigned long& height)
{
    if (!extent)
        return false;
    width = extent->width;
    height = extent->height;
    return true;
}

} // namespace

IFileAccess* openFile(const CStdStr<char>& fileName, IFileAccess::FileInterpretationModes mode)
{
    return new (std::nothrow) FileAccess(fileName.c_str(), mode);
}

const bool GetFileLength(std::FILE* stream, long& length)
{
    const std::int64_t bytes = stream == nullptr ? -1 : zel::FileLength(stream);
    length = bytes <= std::numeric_limits<long>::max() ? static_cast<long>(bytes) : -1;
    return length != -1;
}

const bool CreateDir(const CStdStr<char>& dirName, const void* const)
{
    return zel::MakeDirectory(dirName.c_str());
}

const unsigned long GetFileListInDirectory(const CStdStr<char>& directory, const CStdStr<char>& pattern,
                                           CStdStr<char>** const list)
try
{
    const std::vector<std::string> names = MatchingNames(directory, pattern);
    if (names.empty())
        return 0;

    auto texts = std::make_unique<CStdStr<char>[]>(names.size());
    std::copy(names.begin(), names.end(), texts.get());
    *list = texts.release();
    return static_cast<unsigned long>(names.size());
}
catch (const std::exception&)
{
    return 0;
}

const bool IsWindowExisting(const unsigned char* const window)
{
    return window != nullptr && zel::WindowExists(window);
}

const bool GetWindowRect(const unsigned char* const window, unsigned long& width, unsigned long& height)
{
    return window != nullptr && Deliver(zel::WindowExtent(window), width, height);
}

const bool GetClientRect(const unsigned char* const window, unsigned long& width, unsigned long& height)
{
    return window != nullptr && Deliver(zel::ClientExtent(window), width, height);
}

char* const LoadLib(const CStdStr<char>& libraryName)
{
    return zel::OpenLibrary(libraryName.c_str());
}

const bool FreeLib(char* const library)
{
    return library != nullptr && zel::CloseLibrary(library);
}

void* GetFunctionReference(char* const library, const CStdStr<char>& functionName)
{
    return library == nullptr ? nullptr : zel::FindFunction(library, functionName.c_str());
}

unsigned long beginThread(unsigned long (*routine)(void*), void* argument)
{
    return routine == nullptr ? 0 : zel::StartThread(routine, argument);
}

void threadSleep(unsigned long milliseconds)
{
    zel::SleepFor(milliseconds);
}

void getTime(unsigned short* const seconds, unsigned short* const minutes, unsigned short* const hours)
{
    const std::tm now = zel::LocalTime();
    *seconds = static_cast<unsigned short>(std::min(now.tm_sec, 59)); // a leap second is 60
    *minutes = static_cast<unsigned short>(now.tm_min);
    *hours = static_cast<unsigned short>(now.tm_hour);
}

const bool GetModulePath(const CStdStr<char>& moduleName, CStdStr<char>& path, unsigned int size)
try
{
    const std::optional<std::string> whole = zel::ModulePath(moduleName.c_str());
    if (!whole)
        return false;

    path = whole->substr(0, size == 0 ? 0 : size - 1);
    return !path.empty();
}
catch (const std::exception&)
{
    return false;
}

} // namespace OSDependant
