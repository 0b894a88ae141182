#pragma once

#include <string>

/// What the tests ask of the system, written once per system like the library's own platform code.
namespace test
{

/// Open descriptors of this process.
int OpenDescriptors();

/// What threads leave behind when they are not released: 4 MB of mapped pages count as one, on Windows 16
/// handles.
long ThreadRemains();

/// Makes a named pipe in the file system; false where there are none.
bool MakeFifo(const char* path);

/// Whether a listing comes in the order of the names' bytes.
extern const bool kListsInByteOrder;

/// The debug log's path.
extern const char* const kLogFile;

/// A device that swallows what is written: a stream's target that is no ordinary file.
extern const char* const kNullDevice;

/// While one lives, no file grows beyond its size: what is written there fails as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(long bytes);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    static bool IsPossible();
};

/// While one lives, this process has no rights but those that everybody has.
class NoRights
{
public:
    NoRights();
    ~NoRights();
    NoRights(const NoRights&) = delete;
    NoRights& operator=(const NoRights&) = delete;

    /// False where rights cannot be dropped, or keep nobody from reading.
    static bool ArePossible();
};

/// A named pipe that gives a text, then another one again and again until its reader has enough.
class EndlessPipe
{
public:
    EndlessPipe(const std::string& path, const std::string& first, const std::string& again);
    ~EndlessPipe();
    EndlessPipe(const EndlessPipe&) = delete;
    EndlessPipe& operator=(const EndlessPipe&) = delete;

private:
    std::string m_path;
    int m_writer = 0; // its process
};

/// Held by one process of the machine at a time; waits for it.
class ProcessLock
{
public:
    ProcessLock();
    ~ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

private:
    void* m_handle;
};

/// A real window as large as asked on its inside, with or without a frame.
class Window
{
public:
    Window(unsigned width, unsigned height, bool hasFrame);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// False where the system has no place for windows, or the library is built without them.
    static bool ArePossible();

    const unsigned char* Handle() const { return m_handle; }
    unsigned FrameWidth() const { return m_frameWidth; }
    unsigned FrameHeight() const { return m_frameHeight; }

    /// The handle stays, as that of a window that is no more.
    void Close();

private:
    unsigned char m_handle[sizeof(void*)] = {};
    void* m_connection = nullptr;
    unsigned m_frameWidth = 0, m_frameHeight = 0;
};

} // namespace test
