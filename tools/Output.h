#pragma once

#include "terminal/TerminalText.h"

#include <cstddef>
#include <memory>
#include <streambuf>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

// The program's standard output and standard error, neither of which lets foreign text control a terminal.

/// Buffered standard output. Call `flush` for what the user must see at once, and at the end.
///
/// All that the commands write there goes through it. On a terminal, control characters in foreign text are
/// escaped (`TerminalText`); a pipe or a file gets the bytes unchanged.
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

/// While it exists, escapes for a terminal what is written to `std::cerr`, including what the library
/// reports, if standard error is one.
class TerminalErrors {
public:
    TerminalErrors();
    ~TerminalErrors();
    TerminalErrors(const TerminalErrors&) = delete;
    TerminalErrors& operator=(const TerminalErrors&) = delete;

private:
    std::unique_ptr<std::streambuf> filter_; ///< null if standard error is no terminal
    std::streambuf* original_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
