#pragma once

#include "terminal/TerminalText.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Buffered standard output. Call `flush` for what the user must see at once, and at the end.
///
/// All output of the commands goes through it. On a terminal, control characters in foreign text are escaped
/// (`TerminalText`); a pipe or a file gets the bytes unchanged.
class Output {
public:
    Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// \param text may be `painted` in parts
    /// \throw OutputClosed if nobody reads the output any more; Failure if it cannot be written
    void write(std::string_view text);

    /// \throw as `write` does
    void flush();

private:
    static constexpr std::size_t CAPACITY = 64 * 1024;

    void add(std::string_view text);
    void passOn();

    const bool isTerminal_;
    TerminalText terminalText_;
    std::string shown_; ///< scratch: one text as the terminal gets it
    std::string pending_;
};

} // namespace Tools
} // namespace ZAV
