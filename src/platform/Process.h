#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// \return the full path of the running program's executable file, as the system gives it
std::string executablePath();

/// \return the id of this process
int processId();

} // namespace Platform
} // namespace ZAV
