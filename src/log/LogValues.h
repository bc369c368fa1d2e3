#pragma once

/// \file
/// Logging a text with values that machines find again:
///
///     ZAV_LOGV_INFO(logger, "order charged", "order", 17, "amount", 4.25);
///
/// Behind the text come pairs of a key and a value, any number of them. Keys are made of ASCII letters,
/// digits, `_`, `.` and `-`; any other byte, and an empty key, is logged as `_`. Values are texts, `char`,
/// `bool` and numbers, `signed char` and `unsigned char` among these; a floating one stands in the shortest
/// form that reads back the same.
///
/// In the text of the message the pairs follow: `order charged order=17 amount=4.25`. Appenders and filters
/// have them by `LogMessage::getValues`, the layouts `json` and `fields` show them as what they are.
///
/// As with the macros of `log/LogMacros.h`, nothing is evaluated when the logger's level is above the
/// message's, and `ZAV_LOG_ACTIVE_LEVEL` removes the calls below a level.

#include "log/LogMacros.h"
#include "log/MessageWithValues.h"

/// The part that all macros share.
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
