#pragma once

#include <stdexcept>

namespace ZAV {
namespace Tools {

/// Ends a command with `EXIT_PROBLEM`; the text goes to standard error.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Tools
} // namespace ZAV
