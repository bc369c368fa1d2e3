#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// Asks the system for the computer's name, which may be a fully qualified one.
/// \param name receives the name; untouched on failure
/// \return false if the system does not know it
bool readHostName(std::string& name);

} // namespace Platform
} // namespace ZAV
