#pragma once

/// \file
/// Logs a text with named values that machines can extract:
///
///     #include "log/LoggerFactory.h"
///
///     void charged(int order, double amount) {
///         static ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("shop.orders");
///         ZAV_LOGV_INFO(logger, "order charged", "order", order, "amount", amount);
///     }
///
/// The text is followed by any number of pairs of a key and a value. Keys consist of ASCII letters, digits,
/// `_`, `.` and `-`; any other byte, and an empty key, is logged as `_`. A value is a text, a `char`, a
/// `bool` or a number, which includes `signed char` and `unsigned char`; a floating-point number has the
/// shortest form that reads back the same.
///
/// The text of the message ends with the pairs: `order charged order=17 amount=4.25`. Appenders and filters
/// get them from `LogMessage::getValues`. The layout `json` writes each value with its type, and the layout
/// `fields` has a column for them.
///
/// As with the macros of `log/LogMacros.h`, nothing is evaluated when the logger's level is above the
/// message's, and `ZAV_LOG_ACTIVE_LEVEL` removes the calls below a level.

#include "log/LogMacros.h"
#include "log/MessageWithValues.h"

/// Shared by all macros.
#define ZAV_LOGV_MESSAGE(logger, level, ...)                                                                 \
    ZAV_LOG_IF_LOGGABLE(                                                                                     \
        logger, level,                                                                                       \
        ::ZAV::Log::MessageWithValues::log(zavLogLogger, zavLogLevel, __LINE__, __FILE__, __VA_ARGS__);)

#define ZAV_LOGV_AUDIT(logger, ...) ZAV_LOGV_MESSAGE(logger, 60, __VA_ARGS__)
#define ZAV_LOGV_ERROR(logger, ...) ZAV_LOGV_MESSAGE(logger, 50, __VA_ARGS__)
#define ZAV_LOGV_WARNING(logger, ...) ZAV_LOGV_MESSAGE(logger, 40, __VA_ARGS__)
#define ZAV_LOGV_INFO(logger, ...) ZAV_LOGV_MESSAGE(logger, 30, __VA_ARGS__)
#define ZAV_LOGV_DEBUG(logger, ...) ZAV_LOGV_MESSAGE(logger, 20, __VA_ARGS__)
#define ZAV_LOGV_TRACE(logger, ...) ZAV_LOGV_MESSAGE(logger, 10, __VA_ARGS__)
