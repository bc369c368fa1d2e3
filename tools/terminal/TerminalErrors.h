#pragma once

#include <memory>
#include <streambuf>

namespace ZAV {
namespace Tools {

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
