#include "platform/Files.h"

#include <cstdio>

namespace ZAV {
namespace Platform {

bool renameFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0; // which overwrites nothing here
}

bool removeFile(const std::string& path) {
    return std::remove(path.c_str()) == 0;
}

} // namespace Platform
} // namespace ZAV
