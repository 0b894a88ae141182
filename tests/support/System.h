#pragma once

/// What the tests need from the system, implemented once per system.
namespace test
{

/// Grows by 1 or more with every thread that is never released: the handles of the process on Windows,
/// elsewhere its mapped memory in units of 2 MB.
long ThreadRemains();

/// Waits until no other process of the machine that has called this still runs.
void LockMachine();

/// Makes a named pipe; false on systems that have none.
bool MakeFifo(const char* path);

extern const char* const kLogFile;    ///< the debug log
extern const char* const kFullDevice; ///< writing to it fails as on a full disk; null on systems without one
extern const bool kListsInByteOrder;  ///< whether listings of folders come sorted

/// A window of 320 x 200 pixels inside its frame, if it has one. With the frame it has `outerWidth` x
/// `outerHeight` pixels; both are 0 where no window can be made.
struct Window
{
    explicit Window(bool hasFrame);
    void Close(); ///< the handle stays as that of a window that no longer exists

    unsigned char handle[sizeof(void*)] = {};
    unsigned char noWindow[sizeof(void*)] = {}; ///< the handle of something else, or zero
    unsigned long outerWidth = 0, outerHeight = 0;
    void* owner = nullptr; ///< what Close needs
};

} // namespace test
