#pragma once

#include <atomic>

/// Makes calls of a program fail. The source of this file stands in for the global operators new and delete
/// and for malloc, free and fread, which the program is linked with --wrap for. New memory is filled with
/// 0xA5, so that what nobody has initialised does not look like 0.
namespace test
{

/// Blocks that are allocated and not yet released. Threads that a test starts release blocks, too.
inline std::atomic<long> g_liveBlocks = 0;

/// The next fault. Allocation: call number `callsBefore` fails; if `isLasting`, all later ones too. Read:
/// that call fails; if `isLasting`, the file `path` is cut to 100 bytes first, and reads beyond them fail.
struct Plan
{
    int callsBefore = -1; ///< calls that succeed before; negative for no fault
    bool isOfReads = false, isLasting = false;
    const char* path = nullptr;
    bool hasHappened = false;
};
inline Plan g_plan;

} // namespace test
