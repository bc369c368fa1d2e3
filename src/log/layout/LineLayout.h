#pragma once

#include <memory>
#include <string>
#include <utility>
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

/// Appends the line that `formatLogLine` returns. The text is reallocated at most once, and afterwards has
/// room for a line end.
void appendLogLine(std::string& text, const MessageFields& message);

/// Appends the line that `formatLogLineWithProcess` returns. The text is reallocated at most once, and
/// afterwards has room for a line end.
void appendLogLineWithProcess(std::string& text, const MessageFields& message);

class PlainLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override {
        appendLogLine(line, message);
    }
};

class ProcessLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override {
        appendLogLineWithProcess(line, message);
    }
};

/// Another layout, with line breaks, other control characters and backslashes in logger name, file and text
/// written as `\n`, `\r`, `\t`, `\xHH` and `\\`: one message is one line then, and no text can pass for a
/// line of its own. The control characters from U+0080 to U+009F and those that override or isolate the
/// direction of writing become `\u{HHHH}`; other bytes above 127 stay as they are, and so do pairs, whose
/// values are quoted already.
class EscapedLayout : public LineLayout {
public:
    explicit EscapedLayout(std::shared_ptr<const LineLayout> layout) : layout_(std::move(layout)) {}

    void append(std::string& line, const MessageFields& message) const override;

private:
    const std::shared_ptr<const LineLayout> layout_;
};

/// The columns that a configuration asks for, separated by one blank. Pairs of which there are none leave no
/// blank.
class FieldsLayout : public LineLayout {
public:
    explicit FieldsLayout(std::vector<Column> columns) : columns_(std::move(columns)) {}

    void append(std::string& line, const MessageFields& message) const override;

private:
    const std::vector<Column> columns_;
};

/// One JSON object a line, without a blank outside of texts. Whatever a message holds, it is one line, in
/// valid UTF-8.
class JsonLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override;
};

} // namespace Log
} // namespace ZAV
