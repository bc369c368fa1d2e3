#pragma once

/// \file
/// Logging with a streamed text and the call's own place:
///
///     ZAV_LOG_INFO(logger, "user " << id << " left");
///
/// The logger is evaluated once. Nothing of the expression is evaluated when the logger's level is above the
/// message's; otherwise it is evaluated once, too. A macro is one statement, also in an unbraced `if` with an
/// `else`.
///
/// `ZAV_LOG_ACTIVE_LEVEL`, defined before this header is included, removes the calls below a level from the
/// program, logger and all: `ZAV_LOG_LEVEL_AUDIT` keeps `AUDIT` alone, and so on down to
/// `ZAV_LOG_LEVEL_TRACE`, the default, for all. The numbers of the levels do as well.

#include "log/Level.h"
#include "log/Logger.h"
#include "log/MessageInserter.h"
#include "log/MessageStream.h"

#if !defined(ZAV_LOG_ACTIVE_LEVEL)
#define ZAV_LOG_ACTIVE_LEVEL ZAV_LOG_LEVEL_TRACE
#endif

/// Most calls are rejected; with this, the compiler moves the code of the others out of their way.
#if defined(__GNUC__)
#define ZAV_LOG_UNLIKELY(condition) __builtin_expect((condition), false)
#else
#define ZAV_LOG_UNLIKELY(condition) (condition)
#endif

/// The part that all macros share: the statements run if the message passes, with `zavLogLogger` for the
/// logger and `zavLogLevel` for the level. `level` is one of the numbers of `Level::LogLevel`, which no other
/// macro can replace.
#define ZAV_LOG_IF_LOGGABLE(logger, level, statements)                                                       \
    do {                                                                                                     \
        if constexpr ((level) >= ZAV_LOG_ACTIVE_LEVEL) {                                                     \
            constexpr auto zavLogLevel = static_cast<::ZAV::Log::Level::LogLevel>(level);                    \
            const ::ZAV::Log::Logger& zavLogLogger = (logger);                                               \
            if (ZAV_LOG_UNLIKELY(zavLogLogger.isLoggable(zavLogLevel))) {                                    \
                statements                                                                                   \
            }                                                                                                \
        }                                                                                                    \
    } while (false)

#define ZAV_LOG_MESSAGE(logger, level, expression)                                                           \
    ZAV_LOG_IF_LOGGABLE(logger, level, ::ZAV::Log::MessageStream zavLogMessage(zavLogLogger);                \
                        ::ZAV::Log::MessageInserter{zavLogMessage} << expression;                            \
                        zavLogMessage.logTo(zavLogLogger, zavLogLevel, __LINE__, __FILE__);)

#define ZAV_LOG_AUDIT(logger, expression) ZAV_LOG_MESSAGE(logger, 60, expression)
#define ZAV_LOG_ERROR(logger, expression) ZAV_LOG_MESSAGE(logger, 50, expression)
#define ZAV_LOG_WARNING(logger, expression) ZAV_LOG_MESSAGE(logger, 40, expression)
#define ZAV_LOG_INFO(logger, expression) ZAV_LOG_MESSAGE(logger, 30, expression)
#define ZAV_LOG_DEBUG(logger, expression) ZAV_LOG_MESSAGE(logger, 20, expression)
#define ZAV_LOG_TRACE(logger, expression) ZAV_LOG_MESSAGE(logger, 10, expression)
