#pragma once

#include "log/layout/LineLayout.h"

#include <memory>
#include <utility>

namespace ZAV {
namespace Log {

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

} // namespace Log
} // namespace ZAV
