#pragma once

#include <string>

/// What the tests need from the system, implemented once per system.
namespace test
{

/// Takes a lock that this process keeps until it ends, so that one test process at a time uses the debug log.
/// Returns the log's path.
std::string LockLog();

/// A window of 320 x 200 pixels inside its frame, if it has one. It stays until the program ends. With the
/// frame it has `outerWidth` x `outerHeight` pixels; both are 0 where no window can be made.
struct Window
{
    explicit Window(bool hasFrame);

    unsigned char handle[sizeof(void*)] = {};
    unsigned char noWindow[sizeof(void*)] = {2}; ///< the handle of something else, or of nothing
    unsigned long outerWidth = 0, outerHeight = 0;
};

} // namespace test
