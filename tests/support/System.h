#pragma once

#include <string>

/// What the tests need from the system, implemented once per system.
namespace test
{

/// Waits until no other process of the machine that has called this still runs. Returns the path of the debug
/// log, which all of them share.
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
