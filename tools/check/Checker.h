#pragma once

#include "check/Findings.h"

#include <map>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Checks property files together, since they may be those of one machine.
class Checker {
public:
    /// \return the findings in a file, by line; a finding about two files belongs to the one checked later
    std::vector<Finding> check(const std::string& fileName);

private:
    std::map<std::string, std::string> queueFiles_; ///< see `QueueFilesOfOthers`
};

} // namespace Tools
} // namespace ZAV
