#pragma once

#include "log/PairValue.h"
#include "zav-util/Export.h"

#include <string_view>

namespace ZAV {
namespace Log {

struct ContextEntry;

/// A pair that every message has which the calling thread logs while the object lives:
///
///     const ZAV::Log::LogContext context("request", id);
///
/// Objects nest. An inner one hides an outer one with the same key and stands at its own place. The pair is
/// taken when the object is made: a later change of the value changes nothing. It belongs to the thread that
/// made the object; other threads, also those that this one starts, do not have it. Another thread may
/// destroy the object; the pair is gone then from the messages that its own thread logs afterwards.
///
/// Appenders and filters see the pairs by `LogMessage::getContext`, also those that another thread runs
/// later; the layouts `json` and `fields` show them. It takes no lock, and memory only the first time in a
/// thread, or if there are more pairs than ever before.
class ZAV_LOG_API LogContext {
public:
    /// \param key ASCII letters, digits, `_`, `.` and `-`; any other byte, and an empty key, is logged as `_`
    /// \param value a text, `char`, `bool` or a number
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
