#pragma once

/// \file
/// Logs a format string with values and the source location of the call:
///
///     #include "log/LoggerFactory.h"
///
///     void leave(int id, double seconds) {
///         static ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
///         ZAV_LOGF_INFO(logger, "user {} left after {:.1f} s", id, seconds);
///     }
///
/// The format is a literal or another compile-time constant, in the syntax of {fmt}, which is that of
/// `std::format`. A format that does not suit the values, or does not use all of them, is a compile-time
/// error. As with the macros of `log/LogMacros.h`, nothing is evaluated when the logger's level is above the
/// message's, and `ZAV_LOG_ACTIVE_LEVEL` removes the calls below a level.
///
/// A value that cannot be formatted (a null pointer in place of a text, a negative width that is itself a
/// value, an exception from a formatter of the application) causes no exception: the message then consists of
/// the format and the text of the error. Only std::bad_alloc reaches the caller.
///
/// The headers of {fmt} are needed for the check alone: numbers, characters, booleans, texts (`const char*`,
/// `std::string`, `std::string_view`) and addresses are formatted by the library, which contains {fmt}
/// without exporting any of it. A program links `fmt::fmt` or `fmt::fmt-header-only` only if it logs values
/// of other types, such as durations, enumerations, `long double`, and types with formatters of its own.
/// Where the headers of {fmt} are missing, `std::format` checks and formats all calls.

#include "log/FormattedMessage.h"
#include "log/LogMacros.h"

/// Shared by all macros. The format, the first of the further arguments, is passed twice, once in the form
/// that the compiler checks; `ZAV_LOGF_FIRST` always gets a second argument, since it must have one.
#define ZAV_LOGF_MESSAGE(logger, level, ...)                                                                 \
    ZAV_LOG_IF_LOGGABLE(logger, level,                                                                       \
                        static_assert(ZAV_LOGF_IS_KNOWN(ZAV_LOGF_FIRST(__VA_ARGS__, )),                      \
                                      "the format of a ZAV_LOGF_ call must be a string literal");            \
                        ::ZAV::Log::FormattedMessage::log(                                                   \
                            ZAV_LOGF_CHECKED(ZAV_LOGF_FIRST(__VA_ARGS__, )), zavLogLogger,                   \
                            ::ZAV::Log::FormattedMessage::numbers(sizeof __FILE__ - 1, __LINE__, level),     \
                            __FILE__, __VA_ARGS__);)
#define ZAV_LOGF_FIRST(first, ...) first

#define ZAV_LOGF_AUDIT(logger, ...) ZAV_LOGF_MESSAGE(logger, 60, __VA_ARGS__)
#define ZAV_LOGF_ERROR(logger, ...) ZAV_LOGF_MESSAGE(logger, 50, __VA_ARGS__)
#define ZAV_LOGF_WARNING(logger, ...) ZAV_LOGF_MESSAGE(logger, 40, __VA_ARGS__)
#define ZAV_LOGF_INFO(logger, ...) ZAV_LOGF_MESSAGE(logger, 30, __VA_ARGS__)
#define ZAV_LOGF_DEBUG(logger, ...) ZAV_LOGF_MESSAGE(logger, 20, __VA_ARGS__)
#define ZAV_LOGF_TRACE(logger, ...) ZAV_LOGF_MESSAGE(logger, 10, __VA_ARGS__)
