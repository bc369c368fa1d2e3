#pragma once

#include "check/Finding.h"
#include "check/PropertyFile.h"

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

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
