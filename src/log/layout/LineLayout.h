#pragma once

#include "zav-util/TimeUtils.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

struct MessageFields;

/// Renders messages as lines. Objects are immutable, so several threads may share one.
class LineLayout {
public:
    LineLayout() = default;
    virtual ~LineLayout() = default;
    LineLayout(const LineLayout&) = delete;
    LineLayout& operator=(const LineLayout&) = delete;

    /// Appends the line of a message without a line end, and leaves room for that.
    /// \param message with its `text` as characters, and with its `pairsText` made
    /// \throw std::bad_alloc
    virtual void append(std::string& line, const MessageFields& message) const = 0;
};

/// The layouts that a configuration can name.
enum class LayoutName {
    PLAIN,   ///< what `formatLogLine` returns
    PROCESS, ///< what `formatLogLineWithProcess` returns
    JSON,
    FIELDS
};

/// The columns of `FIELDS`.
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

/// Appends what an appender writes for a message: the line and a line end.
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

/// Wraps another layout, and escapes line breaks, other control characters and backslashes in logger name,
/// file and text as `\n`, `\r`, `\t`, `\xHH` and `\\`, so that each message is one line and no text can forge
/// another. The control characters from U+0080 to U+009F and those that embed, override or isolate the text
/// direction become `\u{HHHH}`; other bytes above 127 are unchanged, and so are pairs, whose values are
/// quoted already.
class EscapedLayout : public LineLayout {
public:
    explicit EscapedLayout(std::shared_ptr<const LineLayout> layout) : layout_(std::move(layout)) {}

    void append(std::string& line, const MessageFields& message) const override;

private:
    const std::shared_ptr<const LineLayout> layout_;
};

/// The configured columns, separated by single spaces. An empty column of pairs is left out, with its space.
class FieldsLayout : public LineLayout {
public:
    explicit FieldsLayout(std::vector<Column> columns) : columns_(std::move(columns)) {}

    void append(std::string& line, const MessageFields& message) const override;

private:
    const std::vector<Column> columns_;
};

/// One JSON object per line, without spaces outside of strings. Whatever a message contains, it is one line
/// of valid UTF-8.
class JsonLayout : public LineLayout {
public:
    void append(std::string& line, const MessageFields& message) const override;
};

// The process that lines show

/// What lines show of a process.
struct ProcessDescription {
    std::string_view program; ///< its file name
    int id;
    std::string_view host;
};

/// Makes the calling thread's lines show another process during the object's lifetime, such as the one that
/// left messages in a queue file.
class ProcessOverride {
public:
    /// \param process its texts must outlive the object
    explicit ProcessOverride(const ProcessDescription& process) noexcept;
    ~ProcessOverride();
    ProcessOverride(const ProcessOverride&) = delete;
    ProcessOverride& operator=(const ProcessOverride&) = delete;

private:
    const ProcessDescription process_;
};

/// \param time of the message that is rendered; the host name is read again when its second changes
/// \return views that stay valid until the calling thread calls this again
ProcessDescription describeProcess(Util::TimeUtils::Time time);

} // namespace Log
} // namespace ZAV
