#pragma once

#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

struct MessageFields;

/// A form of a line. Objects never change, so any number of threads may use one.
class LineLayout {
public:
    LineLayout() = default;
    virtual ~LineLayout() = default;
    LineLayout(const LineLayout&) = delete;
    LineLayout& operator=(const LineLayout&) = delete;

    /// Appends the line of a message without its end, for which the text then has room.
    /// \param message with its text as characters, and with the text of its pairs
    /// \throw std::bad_alloc
    virtual void append(std::string& line, const MessageFields& message) const = 0;
};

/// What a configuration calls a layout.
enum class LayoutName {
    PLAIN,   ///< what `formatLogLine` returns
    PROCESS, ///< what `formatLogLineWithProcess` returns
    JSON,
    FIELDS
};

/// What a column of `FIELDS` shows.
enum class Column {
    TIME,
    UTC,
    LEVEL,
    LOGGER,
    THREAD,
    PROCESS,
    PID,
    HOST,
    PLACE,
    CONTEXT,
    VALUES,
    MESSAGE,
    TEXT
};

/// \param columns of `FIELDS`
/// \param isEscaped whether each message is kept on one line, as `EscapedLayout` does; one of `JSON` always is
std::shared_ptr<const LineLayout> makeLayout(LayoutName name, const std::vector<Column>& columns,
                                             bool isEscaped);

/// Appends what an appender writes for a message: a line and its end.
inline void appendWholeLine(std::string& line, const MessageFields& message, const LineLayout& layout) {
    layout.append(line, message);
    line += '\n';
}

} // namespace Log
} // namespace ZAV
