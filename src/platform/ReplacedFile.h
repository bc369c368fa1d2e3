#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// The two steps in which a file gets a new content as a whole: at every moment, also after a crash of the
/// process or of the machine, its path leads to the old content or to the new one.

/// Puts the new content on the disk, in a file PATH.new, and waits for that.
/// \param path of a file that may not exist yet
/// \param problem receives the system's word for what went wrong
/// \return false if that is not possible; nothing is left behind then
bool writeReplacement(const std::string& path, const std::string& content, std::string& problem);

/// Puts it into the place of the old one, which takes no time.
/// \copydetails writeReplacement
bool replaceFile(const std::string& path, std::string& problem);

} // namespace Platform
} // namespace ZAV
