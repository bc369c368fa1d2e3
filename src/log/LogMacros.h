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
/// program, logger and all: 60 keeps `AUDIT` alone, 50 adds `ERROR`, and so on by tens down to 10, the
/// default, for all.

#include "log/Level.h"
#include "log/Logger.h"
#include "log/MessageStream.h"

#if !defined(ZAV_LOG_ACTIVE_LEVEL)
#define ZAV_LOG_ACTIVE_LEVEL 10
#endif

/// The part that all macros share. `level` is one of the numbers of `Level::LogLevel`, which no other macro
/// can replace; `operation` is the logger's member function.
#define ZAV_LOG_MESSAGE(logger, level, operation, expression)                                                \
    do {                                                                                                     \
        if constexpr ((level) >= ZAV_LOG_ACTIVE_LEVEL) {                                                     \
            ::ZAV::Log::Logger& zavLogLogger = (logger);                                                     \
            if (zavLogLogger.isLoggable(static_cast<::ZAV::Log::Level::LogLevel>(level))) {                  \
                ::ZAV::Log::MessageStream zavLogMessage;                                                     \
                zavLogMessage.stream() << expression;                                                        \
                zavLogMessage.logTo(zavLogLogger, &::ZAV::Log::Logger::operation, __LINE__, __FILE__);       \
            }                                                                                                \
        }                                                                                                    \
    } while (false)

#define ZAV_LOG_AUDIT(logger, expression) ZAV_LOG_MESSAGE(logger, 60, audit, expression)
#define ZAV_LOG_ERROR(logger, expression) ZAV_LOG_MESSAGE(logger, 50, error, expression)
#define ZAV_LOG_WARNING(logger, expression) ZAV_LOG_MESSAGE(logger, 40, warning, expression)
#define ZAV_LOG_INFO(logger, expression) ZAV_LOG_MESSAGE(logger, 30, info, expression)
#define ZAV_LOG_DEBUG(logger, expression) ZAV_LOG_MESSAGE(logger, 20, debug, expression)
#define ZAV_LOG_TRACE(logger, expression) ZAV_LOG_MESSAGE(logger, 10, trace, expression)
