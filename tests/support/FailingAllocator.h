#pragma once

/// Stands in for the global allocation functions of a program, operator new and malloc: counts what is alive
/// and can refuse one allocation. The program is linked with --wrap for malloc, calloc and free.
namespace test
{

/// Blocks allocated and not yet released.
long LiveBlocks();

/// Lets `count` more allocations succeed and the one behind them fail. A negative count: none fails.
void FailAllocation(int count);

/// Whether an allocation has been refused since FailAllocation.
bool AllocationFailed();

} // namespace test
