// PLATFORM_PRINTF(F, A): the compiler checks a function's calls as printf's: argument F is the format, A the first
// of the values. mingw-w64's C++ library prints by the C standard, where the system's own format check knows no
// %zu.
#pragma once

#if defined(_WIN32) && !defined(__clang__)
#define PLATFORM_PRINTF(F, A) __attribute__((format(gnu_printf, F, A)))
#else
#define PLATFORM_PRINTF(F, A) __attribute__((format(printf, F, A)))
#endif
