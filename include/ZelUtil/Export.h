#pragma once

/// ZELUTIL_API marks what the shared library exports. A program that links the static library must define
/// ZELUTIL_STATIC (the CMake target and pkg-config do so). The build of the shared library defines
/// ZELUTIL_BUILDING.
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

/// Enclose declarations of functions that return `const int`, `const bool` and the like. The `const` is part
/// of these function types, so it must stay; compilers warn that it has no other effect.
#define ZELUTIL_CONST_RESULTS_BEGIN                                                                          \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wignored-qualifiers\"")
#define ZELUTIL_CONST_RESULTS_END _Pragma("GCC diagnostic pop")
