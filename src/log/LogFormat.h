#pragma once

/// \file
/// Logging with a format string and the call's own place:
///
///     ZAV_LOGF_INFO(logger, "user {} left after {} s", id, seconds);
///
/// The format is a literal in the language of {fmt}, which is that of `std::format`. One that does not suit
/// the values is an error of the compiler. As with the macros of `log/LogMacros.h`, nothing is evaluated when
/// the logger's level is above the message's, and `ZAV_LOG_ACTIVE_LEVEL` removes the calls below a level.
///
/// A failure to format a value, which only a formatter of the application's can have, is not thrown: the
/// message then holds the format and the failure's text. Only std::bad_alloc reaches the caller.
///
/// The library itself does not contain {fmt}: a program that includes this header links `fmt::fmt` or
/// `fmt::fmt-header-only`. Where {fmt} is missing, the header uses `std::format`.

#include "log/FormattedMessage.h"
#include "log/LogMacros.h"

/// The part that all macros share. The format, the first of the further arguments, is also passed as what the
/// compiler checks; `ZAV_LOGF_FIRST` always gets another argument, since it may not do without.
#define ZAV_LOGF_MESSAGE(logger, level, ...)                                                                 \
    ZAV_LOG_IF_LOGGABLE(logger, level,                                                                       \
                        ::ZAV::Log::FormattedMessage(zavLogLogger, zavLogLevel, __LINE__, __FILE__)          \
                            .log(ZAV_LOGF_CHECKED(ZAV_LOGF_FIRST(__VA_ARGS__, )) __VA_ARGS__);)
#define ZAV_LOGF_FIRST(first, ...) first

#define ZAV_LOGF_AUDIT(logger, ...) ZAV_LOGF_MESSAGE(logger, 60, __VA_ARGS__)
#define ZAV_LOGF_ERROR(logger, ...) ZAV_LOGF_MESSAGE(logger, 50, __VA_ARGS__)
#define ZAV_LOGF_WARNING(logger, ...) ZAV_LOGF_MESSAGE(logger, 40, __VA_ARGS__)
#define ZAV_LOGF_INFO(logger, ...) ZAV_LOGF_MESSAGE(logger, 30, __VA_ARGS__)
#define ZAV_LOGF_DEBUG(logger, ...) ZAV_LOGF_MESSAGE(logger, 20, __VA_ARGS__)
#define ZAV_LOGF_TRACE(logger, ...) ZAV_LOGF_MESSAGE(logger, 10, __VA_ARGS__)
