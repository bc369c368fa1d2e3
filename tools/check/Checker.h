#pragma once

#include "check/Finding.h"

#include <map>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Checks property files, which may be those of one machine.
class Checker {
public:
    /// \return what is wrong with a file, in the order of its lines; a finding about two files is one of the later file
    std::vector<Finding> check(const std::string& fileName);

private:
    std::map<std::string, std::string> queueFiles_; ///< see `QueueFilesOfOthers`
};

} // namespace Tools
} // namespace ZAV
