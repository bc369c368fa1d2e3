#pragma once

/// \file
/// Logs a streamed text and the source location of the call:
///
///     #include "log/LoggerFactory.h"
///
///     void leave(int id) {
///         static ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
///         ZAV_LOG_INFO(logger, "user " << id << " left");
///     }
///
/// The logger is evaluated once. The expression is evaluated once too, or not at all when the logger's level
/// is above the message's. A macro is a single statement, even in an unbraced `if` with an `else`.
///
/// `ZAV_LOG_ACTIVE_LEVEL`, defined before this header is included, removes all calls below a level from the
/// program, including their loggers: `ZAV_LOG_LEVEL_AUDIT` keeps only `AUDIT`, and so on down to
/// `ZAV_LOG_LEVEL_TRACE`, the default, which keeps everything. The numbers of the levels will do as well.

#include "log/Level.h"
#include "log/Logger.h"
#include "log/MessageInserter.h"
#include "log/MessageStream.h"

#if !defined(ZAV_LOG_ACTIVE_LEVEL)
#define ZAV_LOG_ACTIVE_LEVEL ZAV_LOG_LEVEL_TRACE
#endif

/// Most calls are rejected; this makes the compiler move the code for the others out of the way.
#if defined(__GNUC__)
#define ZAV_LOG_UNLIKELY(condition) __builtin_expect((condition), false)
#else
#define ZAV_LOG_UNLIKELY(condition) (condition)
#endif

/// Shared by all macros: runs the statements if the message passes, with `zavLogLogger` for the logger and
/// `zavLogLevel` for the level. `level` is a number of `Level::LogLevel`, since a macro could replace a name.
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

// Not in parentheses: "a << b" is meant to stream a, then b.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define ZAV_LOG_MESSAGE(logger, level, expression)                                                           \
    ZAV_LOG_IF_LOGGABLE(logger, level, ::ZAV::Log::MessageStream zavLogMessage(zavLogLogger);                \
                        ::ZAV::Log::MessageInserter{zavLogMessage} << expression;                            \
                        zavLogMessage.logTo(zavLogLogger, zavLogLevel, __LINE__, __FILE__);)
// NOLINTEND(bugprone-macro-parentheses)

#define ZAV_LOG_AUDIT(logger, expression) ZAV_LOG_MESSAGE(logger, 60, expression)
#define ZAV_LOG_ERROR(logger, expression) ZAV_LOG_MESSAGE(logger, 50, expression)
#define ZAV_LOG_WARNING(logger, expression) ZAV_LOG_MESSAGE(logger, 40, expression)
#define ZAV_LOG_INFO(logger, expression) ZAV_LOG_MESSAGE(logger, 30, expression)
#define ZAV_LOG_DEBUG(logger, expression) ZAV_LOG_MESSAGE(logger, 20, expression)
#define ZAV_LOG_TRACE(logger, expression) ZAV_LOG_MESSAGE(logger, 10, expression)
