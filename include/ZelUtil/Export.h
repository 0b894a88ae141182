#pragma once

/// ZELUTIL_API marks what the shared library exports. A program that links the static library defines
/// ZELUTIL_STATIC (the CMake target does it), the library's own build defines ZELUTIL_BUILDING.
#if defined(ZELUTIL_STATIC)
#define ZELUTIL_API
#elif defined(_WIN32)
#if defined(ZELUTIL_BUILDING)
#define ZELUTIL_API __declspec(dllexport)
#else
#define ZELUTIL_API __declspec(dllimport)
#endif
#else
#define ZELUTIL_API __attribute__((visibility("default")))
#endif

/// Brackets declarations whose results are `const int`, `const bool` and the like: the qualifier belongs to
/// the interface's function types, and compilers warn that it has no other effect.
#define ZELUTIL_CONST_RESULTS_BEGIN                                                                          \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wignored-qualifiers\"")
#define ZELUTIL_CONST_RESULTS_END _Pragma("GCC diagnostic pop")
