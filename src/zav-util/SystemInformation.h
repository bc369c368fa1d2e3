#pragma once

#include <string>

namespace ZAV {
namespace Util {

/// \return the computer's name up to its first "."; "UNKNOWN" if the system does not know it
std::string getHostName();

/// \return the file name of the running program's executable, without its directory
std::string getProgramName();

} // namespace Util
} // namespace ZAV
