#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A regular expression, in what Perl and ECMAScript have in common.
class Pattern {
public:
    /// \throw UsageError if the expression cannot be read
    explicit Pattern(const std::string& expression);
    ~Pattern();
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    /// \param text any bytes; those that are no UTF-8 match nothing
    /// \return true if the expression matches anywhere in the text
    /// \throw Failure if the expression needs too many steps to tell
    bool matches(std::string_view text) const;

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

} // namespace Tools
} // namespace ZAV
