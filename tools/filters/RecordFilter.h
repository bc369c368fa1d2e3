#pragma once

#include "filters/TimeBound.h"
#include "log/Level.h"
#include "log/MessageType.h"
#include "records/RecordStream.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZAV {
namespace Tools {

class Pattern;

/// Decides which records are wanted: those that meet every requirement, or all others.
class RecordFilter {
public:
    RecordFilter();
    ~RecordFilter();
    RecordFilter(RecordFilter&& other) noexcept;
    RecordFilter& operator=(RecordFilter&& other) noexcept;

    /// Configuration messages have no level in their lines and count as the most severe.
    void requireLevel(Log::Level::LogLevel level) { level_ = level; }

    /// Once called, a record must be of one of these loggers or of one below it. "root" stands for all.
    void allowLogger(const std::string& name) { loggers_.push_back(name); }

    /// Requires the pair among the values or in the context of a record.
    /// \param text of the value, without quotes
    void requirePair(const std::string& key, const std::string& text) { pairs_.push_back({key, text}); }

    void requireType(Log::MessageType type) { type_ = type; }
    void requireSince(const TimeBound& bound) { since_ = bound; }
    void requireUntil(const TimeBound& bound) { until_ = bound; }

    /// Requires that a regular expression, in the syntax that Perl and ECMAScript have in common, matches
    /// somewhere in the text.
    /// \throw UsageError if the expression is invalid
    void requirePattern(const std::string& expression);

    /// From now on, the records that do not meet the requirements are wanted.
    void invert() { isInverted_ = true; }

    /// \param stream at a record that is no continuation; a continuation shares the result of the record that it
    ///         belongs to
    /// \return true if the record is wanted; one without a time has no level, no logger and no type either
    bool accepts(RecordStream& stream) const;

    /// \return a warning about the accepted records; empty if there is none
    std::string problem() const;

private:
    bool meetsAll(RecordStream& stream) const;
    bool meetsLevelAndType(const Fields& fields) const;
    bool meetsTime(const RecordStream& stream) const;
    bool acceptsLogger(std::string_view logger) const;
    bool hasAllPairs(const Fields& fields) const;

    std::optional<Log::Level::LogLevel> level_;
    std::vector<std::string> loggers_;
    std::vector<std::pair<std::string, std::string>> pairs_;
    std::optional<Log::MessageType> type_;
    std::optional<TimeBound> since_;
    std::optional<TimeBound> until_;
    std::unique_ptr<Pattern> pattern_;
    bool isInverted_ = false;
};

} // namespace Tools
} // namespace ZAV
