#pragma once

#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Makes text that comes from anywhere fit for a terminal, which would obey some of it: control characters
/// but the tab and the end of a line, and bytes that are no UTF-8, become `\xHH`; the control characters
/// behind ASCII, and those that turn the direction of writing, become `\u{HHHH}`.
class TerminalText {
public:
    /// Appends what a terminal is to show of a text. The beginning of a character, or of a line end, that
    /// stands at the end of the text waits for its rest.
    void append(std::string& shown, std::string_view text);

    /// Appends what still waits.
    void finish(std::string& shown);

private:
    std::string begun_;
};

} // namespace Tools
} // namespace ZAV
