#pragma once

#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Escapes untrusted text for a terminal, which would obey some of it: control characters except tab and line
/// end, and bytes that are not UTF-8, become `\xHH`; control characters beyond ASCII, and those that change
/// the direction of writing, become `\u{HHHH}`.
class TerminalText {
public:
    /// Appends a text as a terminal is to show it. An incomplete character or line end at the end of the text
    /// waits for its rest.
    void append(std::string& shown, std::string_view text);

    /// Appends what still waits for its rest.
    void finish(std::string& shown);

private:
    std::string incomplete_;
};

} // namespace Tools
} // namespace ZAV
