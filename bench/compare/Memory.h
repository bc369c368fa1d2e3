#pragma once

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Bench {

/// \param key of a line in /proc/self/status, with its colon
inline std::size_t kilobytesOfProcess(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::stoul(line.substr(key.size()));
        }
    }
    throw std::runtime_error("the system does not tell the memory of the process");
}

/// \return the peak of the process's resident memory so far
inline std::size_t peakMemoryKilobytes() {
    return kilobytesOfProcess("VmHWM:");
}

inline std::size_t residentKilobytes() {
    return kilobytesOfProcess("VmRSS:");
}

} // namespace Bench
