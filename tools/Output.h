#pragma once

#include "terminal/TerminalText.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Standard output, collected into large writes. What its user must see at once needs a `flush`; so does the
/// end.
///
/// It is the way to the terminal for all that the commands show: there foreign text gets no control character
/// through (`TerminalText`). Into a pipe or a file bytes go as they are.
class Output {
public:
    Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// \param text may be `painted` in parts
    /// \throw OutputClosed if nobody reads any more; Failure if the system does not take the text
    void write(std::string_view text);

    /// \throw as `write` does
    void flush();

private:
    static constexpr std::size_t CAPACITY = 64 * 1024;

    void add(std::string_view text);
    void passOn();

    const bool isTerminal_;
    TerminalText terminalText_;
    std::string shown_; ///< one text, as the terminal gets it
    std::string pending_;
};

} // namespace Tools
} // namespace ZAV
