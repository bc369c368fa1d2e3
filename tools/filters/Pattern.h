#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// A regular expression, in the syntax that Perl and ECMAScript have in common.
class Pattern {
public:
    /// \throw UsageError if the expression is invalid
    explicit Pattern(const std::string& expression);
    ~Pattern();
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    /// \param text any bytes; invalid UTF-8 matches nothing
    /// \return true if the expression matches anywhere in the text, or takes too many steps to tell, so that nothing
    ///         wanted is left out
    bool matches(std::string_view text);

    /// \return true if the last text took too many steps
    bool wasUndecided() const { return wasUndecided_; }

    /// \return why some texts could not be decided; empty if all could
    const std::string& problem() const { return problem_; }

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
    bool wasUndecided_ = false;
    std::string problem_;
};

} // namespace Tools
} // namespace ZAV
