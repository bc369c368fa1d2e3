#pragma once

/// \file
/// The version of the headers that a program is compiled with, as numbers and as a text such as "1.2.3":
///
///     #if ZAV_LOG_VERSION_MAJOR != 1
///     #error "This program was written for version 1 of the library."
///     #endif

#define ZAV_LOG_VERSION_MAJOR 1
#define ZAV_LOG_VERSION_MINOR 0
#define ZAV_LOG_VERSION_PATCH 0

/// \cond
#define ZAV_LOG_QUOTE_VERSION(major, minor, patch) #major "." #minor "." #patch
#define ZAV_LOG_EXPAND_VERSION(major, minor, patch) ZAV_LOG_QUOTE_VERSION(major, minor, patch)
/// \endcond

/// The three numbers with dots between them, as a string literal.
#define ZAV_LOG_VERSION                                                                                      \
    ZAV_LOG_EXPAND_VERSION(ZAV_LOG_VERSION_MAJOR, ZAV_LOG_VERSION_MINOR, ZAV_LOG_VERSION_PATCH)
