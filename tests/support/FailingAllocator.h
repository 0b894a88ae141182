#pragma once

/// Stands in for the global allocation functions of a program: counts what is alive and can refuse one
/// allocation.
namespace test
{

/// Blocks allocated and not yet released.
long LiveBlocks();

/// Lets `count` more allocations succeed and the one behind them fail. A negative count: none fails.
void FailAllocation(int count);

/// Whether an allocation has been refused since FailAllocation.
bool AllocationFailed();

} // namespace test
