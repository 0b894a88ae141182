#include <windows.h>

#include <cstdint>

// What the compiler's guards of return addresses call and compare. The toolchain's library for it would have
// the system's cryptography loaded from within the loading of this library.

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

// Before all constructors, and compiled without guards: it changes what they compare.
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
    __stack_chk_guard = static_cast<std::uintptr_t>(bits) & ~std::uintptr_t{255}; // no text runs over a zero
}

} // namespace
