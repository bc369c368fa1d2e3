#pragma once

#include "config/PropertyFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Something in a property file that its author cannot have intended.
struct Finding {
    enum Severity { AN_ERROR, A_WARNING };

    std::size_t line; ///< counted from 1; 0 for the file as a whole
    Severity severity;
    std::string id;  ///< the name of its kind, for example "unknown-key"
    std::string key; ///< the key in the line; empty if there is none
    std::string text;
};

/// \return a finding in the form of a compiler message, without a line end
std::string toText(const std::string& fileName, const Finding& finding, bool withColors);

/// \return a finding as a JSON object, without a line end
std::string toJson(const std::string& fileName, const Finding& finding);

/// Collects the findings in one property file.
class Findings {
public:
    void add(const Finding& finding) { all_.push_back(finding); }
    void addError(const PropertyLine& line, const std::string& id, const std::string& text);
    void addWarning(const PropertyLine& line, const std::string& id, const std::string& text);

    /// \return all findings, in the order of the lines
    std::vector<Finding> inOrder() const;

private:
    std::vector<Finding> all_;
};

} // namespace Tools
} // namespace ZAV
