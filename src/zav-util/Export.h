#pragma once

/// \file
/// Marks what the libraries export; not used directly.
///
/// `ZAV_LOG_API` marks what the shared library `zav-log-dll` exports, `ZAV_LOG_CONTROL_API` and
/// `ZAV_LOG_SYSTEM_API` what `zav-log-control` and `zav-log-system` export. Nothing else is visible outside
/// them. Static libraries export nothing; on Windows their users define `ZAV_LOG_STATIC`, as the CMake
/// package does for them.

#if defined(_WIN32) && defined(ZAV_LOG_STATIC)
#define ZAV_LOG_API
#define ZAV_LOG_CONTROL_API
#define ZAV_LOG_SYSTEM_API
#elif defined(_WIN32)
// GCC exports or imports the type information of all classes in a file like that of the first one with
// virtual functions, so a class of the standard library has to come first.
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
