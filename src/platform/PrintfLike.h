#pragma once

/// \file
/// `ZAV_LOG_PRINTF_LIKE(pattern, first)` has the compiler check a function's arguments against its pattern,
/// as it does for `printf`; the two numbers are the places of the pattern and of the first argument to it.

#if defined(__GNUC__)
#define ZAV_LOG_PRINTF_LIKE(pattern, first) __attribute__((format(printf, pattern, first)))
#else
#define ZAV_LOG_PRINTF_LIKE(pattern, first)
#endif
