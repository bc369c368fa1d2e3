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
    /// \return true if the expression matches anywhere in the text, or takes too many steps to tell: what might be
    /// wanted is not left out
    bool matches(std::string_view text);

    /// \return true if it took too many steps for the last text
    bool wasUndecided() const { return wasUndecided_; }

    /// \return why some texts could not be told; empty if all could
    const std::string& problem() const { return problem_; }

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
    bool wasUndecided_ = false;
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
