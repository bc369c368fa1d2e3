#pragma once

#include <memory>
#include <streambuf>

namespace ZAV {
namespace Tools {

/// Has whatever is written to `std::cerr` while it lives made fit for a terminal, if standard error is one.
/// What the library reports goes there, too.
class TerminalErrors {
public:
    TerminalErrors();
    ~TerminalErrors();
    TerminalErrors(const TerminalErrors&) = delete;
    TerminalErrors& operator=(const TerminalErrors&) = delete;

private:
    std::unique_ptr<std::streambuf> filter_; ///< without one standard error is no terminal
    std::streambuf* original_ = nullptr;
};

} // namespace Tools
} // namespace ZAV
