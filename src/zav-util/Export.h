#pragma once

/// \file
/// `ZAV_LOG_API` marks what the shared library `zav-log-dll` exports, `ZAV_LOG_CONTROL_API` what
/// `zav-log-control` does, and `ZAV_LOG_SYSTEM_API` what `zav-log-system` does; everything else stays inside
/// them. Of static libraries nothing is exported; on Windows their users are to define `ZAV_LOG_STATIC`, as
/// the CMake package does for them.

#if defined(_WIN32) && defined(ZAV_LOG_STATIC)
#define ZAV_LOG_API
#define ZAV_LOG_CONTROL_API
#define ZAV_LOG_SYSTEM_API
#elif defined(_WIN32)
// GCC gives the type information of every class in a file the mark of the first one that has virtual
// functions, so a class of the standard library has to come first.
#include <exception>
#if defined(ZAV_LOG_BUILDING)
#define ZAV_LOG_API __declspec(dllexport)
#else
#define ZAV_LOG_API __declspec(dllimport)
#endif
#if defined(ZAV_LOG_CONTROL_BUILDING)
#define ZAV_LOG_CONTROL_API __declspec(dllexport)
#else
#define ZAV_LOG_CONTROL_API __declspec(dllimport)
#endif
#if defined(ZAV_LOG_SYSTEM_BUILDING)
#define ZAV_LOG_SYSTEM_API __declspec(dllexport)
#else
#define ZAV_LOG_SYSTEM_API __declspec(dllimport)
#endif
#else
#define ZAV_LOG_API __attribute__((visibility("default")))
#define ZAV_LOG_CONTROL_API __attribute__((visibility("default")))
#define ZAV_LOG_SYSTEM_API __attribute__((visibility("default")))
#endif
