#pragma once

/// \file
/// Values that all messages of a thread have, such as the id of a request.

#include "log/PairValue.h"
#include "zav-util/Export.h"

#include <string_view>

namespace ZAV {
namespace Log {

struct ContextEntry;

/// Adds a key and a value to every message that the calling thread logs during the object's lifetime:
///
///     #include "log/LogMacros.h"
///
///     void answer(ZAV::Log::Logger& logger, int id) {
///         const ZAV::Log::LogContext context("request", id);
///         ZAV_LOG_INFO(logger, "accepted"); // has the pair, and so has all that is called from here
///     }
///
/// Objects nest. An inner one hides an outer one with the same key, and takes its own place in the order. The
/// value is copied when the object is created; changing the variable later has no effect. The pair belongs to
/// the thread that created the object; other threads do not have it, not even those that this one starts.
/// Another thread may destroy the object; the messages that the owning thread logs afterwards are then
/// without the pair.
///
/// Appenders and filters get the pairs from `LogMessage::getContext`, even if they run later in another
/// thread; the layouts `json` and `fields` show them. The class takes no lock. It allocates memory only at
/// the first use in a thread, and when a thread has more pairs than ever before.
class ZAV_LOG_API LogContext {
public:
    /// \param key ASCII letters, digits, `_`, `.` and `-`; any other byte, and an empty key, is logged as `_`
    /// \param value a text, a `char`, a `bool` or a number
    /// \throw std::bad_alloc
    template <typename Value>
    [[nodiscard]] LogContext(TextArgument key, const Value& value) : entry_(begin(key, pairValue(value))) {}
    ~LogContext();
    LogContext(const LogContext&) = delete;
    LogContext& operator=(const LogContext&) = delete;

private:
    static ContextEntry& begin(std::string_view key, const TaggedValue& value);

    ContextEntry& entry_;
};

} // namespace Log
} // namespace ZAV
