#pragma once

#include <atomic>

/// Makes calls of a program fail. The source of this file stands in for the global operators new and delete
/// and for malloc, free and fread, which the program is linked with --wrap for. New memory is filled with
/// 0xA5, so that what nobody has initialised does not look like 0.
namespace test
{

/// Blocks that are allocated and not yet released. Threads that a test starts release blocks, too.
inline std::atomic<long> g_liveBlocks = 0;

/// One allocation is refused; it and all later ones are; one read fails, unless the buffer of its stream
/// serves it; the file `path` is cut to 100 bytes before one read.
enum class Fault
{
    Allocation,
    AllAllocations,
    Read,
    Cut
};

/// The next fault.
struct Plan
{
    Fault fault = Fault::Allocation;
    int callsBefore = -1; ///< calls that succeed before; negative for no fault
    const char* path = nullptr;
    bool hasHappened = false;
};
inline Plan g_plan;

} // namespace test
