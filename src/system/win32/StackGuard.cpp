#include <windows.h>

#include <cstdint>

// What code compiled with -fstack-protector needs: the value that it puts before return addresses and
// compares later, and what it calls when they differ. The toolchain's own version would load the system's
// cryptography library while this library is being loaded itself.

extern "C"
{
    std::uintptr_t __stack_chk_guard;

    [[noreturn]] void __stack_chk_fail()
    {
        constexpr UINT kStackBufferOverrun = 0xC0000409;
        TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
        __builtin_trap();
    }
}

namespace
{

// Runs before all other constructors. This file is compiled without guards, because a guarded function must
// not see the value change while it runs.
[[gnu::constructor(101)]] void ChooseGuard()
{
    LARGE_INTEGER counter;
    FILETIME time;
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    std::uint64_t bits =
        static_cast<std::uint64_t>(counter.QuadPart) ^ std::uint64_t{time.dwLowDateTime} << 24 ^
        std::uint64_t{GetCurrentProcessId()} << 40 ^ reinterpret_cast<std::uintptr_t>(&counter);
    bits *= 0x9E3779B97F4A7C15U;
    bits ^= bits >> 32;
    // The lowest byte is zero, so that an overrun by a text function cannot restore the value.
    __stack_chk_guard = static_cast<std::uintptr_t>(bits) & ~std::uintptr_t{255};
}

} // namespace
