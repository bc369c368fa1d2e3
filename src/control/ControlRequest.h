#pragma once

#include "zav-util/TimeUtils.h"

#include <cstddef>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// Splits the bytes of one client into lines. Buffers at most one overlong line plus the bytes appended last.
class LineBuffer {
public:
    /// The longest line, without its line end.
    static constexpr std::size_t MAX_LENGTH = 4096;

    struct Line {
        std::string text; ///< without LF or CR LF
        bool isTooLong;   ///< the text is then dropped; reported as soon as the limit is exceeded
    };

    void append(const std::string& bytes);

    /// \return the next line, if it is complete or too long
    std::optional<Line> next();

private:
    std::optional<Line> nextEnded(std::size_t end);

    std::string bytes_;
    bool isSkipping_ = false; ///< discarding the rest of an overlong line
};

/// \return the text with control characters escaped as `\n`, `\x1b` and the like: on one line, and harmless to a
///         terminal
std::string toPrintable(const std::string& text);

/// A parsed request to a running program. Parsing does not check whether it can be carried out.
class ControlRequest {
public:
    enum Kind { LOGGERS, APPENDERS, LEVEL, LEVEL_FOR, EXPIRATION, COMMAND, STATISTICS, FLUSH, RELOAD };

    /// Parses a line: the kind of the request and its arguments, separated by blanks. The name of a logger or
    /// a file may contain blanks, and the argument of a command is the rest of the line, unchanged.
    /// \param line without its line end
    /// \throw std::invalid_argument for an unknown request, a wrong number of arguments or an invalid time
    static ControlRequest parse(const std::string& line);

    Kind kind() const noexcept { return kind_; }

    /// \return the name of the logger, command or file; empty for other requests, and if no file is given
    const std::string& name() const noexcept { return name_; }

    /// \return the level, the minutes or the command's argument, as given in the line
    const std::string& value() const noexcept { return value_; }

    /// \return how long a temporary level lasts
    Util::TimeUtils::Time duration() const noexcept { return duration_; }

private:
    explicit ControlRequest(Kind kind) : kind_(kind) {}

    Kind kind_;
    std::string name_;
    std::string value_;
    Util::TimeUtils::Time duration_;
};

} // namespace Log
} // namespace ZAV
