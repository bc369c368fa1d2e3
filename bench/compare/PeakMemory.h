#pragma once

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Bench {

/// \return the peak of the process's resident memory so far, in kilobytes
inline std::size_t peakMemoryKilobytes() {
    const std::string key = "VmHWM:";
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::stoul(line.substr(key.size()));
        }
    }
    throw std::runtime_error("the system does not tell the peak memory");
}

} // namespace Bench
