#pragma once

#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Log {

/// A request to a running program, as its line says it. Whether it can be carried out is another question.
class ControlRequest {
public:
    enum Kind { LOGGERS, APPENDERS, LEVEL, LEVEL_FOR, EXPIRATION, COMMAND, STATISTICS, FLUSH, RELOAD };

    /// Reads a line: the kind of the request and its arguments, separated by blanks. The name of a logger or
    /// a file may have blanks in it, and the argument of a command is the rest of the line as it is.
    /// \param line without its end
    /// \throw std::invalid_argument if there is no such request, or if it has too few or too many arguments, or
    ///        a time that is none
    static ControlRequest parse(const std::string& line);

    Kind kind() const noexcept { return kind_; }

    /// \return the logger's, the command's or the file's name; empty for other requests, and without a file
    const std::string& name() const noexcept { return name_; }

    /// \return the level, the minutes or the command's argument, as they stand in the line
    const std::string& value() const noexcept { return value_; }

    /// \return how long a level is to last that is set for a while
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
