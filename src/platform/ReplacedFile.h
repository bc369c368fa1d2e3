#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// Gives a file a new content in one step: at every moment, also after a crash of the process or of the
/// machine, the path leads to the old content as a whole or to the new one. It waits for the disk.
/// \param path of a file that may not exist yet; the content is put together in a file beside it, PATH.new
/// \param problem receives the system's word for what went wrong
/// \return false, and the old content is still there, if that is not possible
bool replaceFile(const std::string& path, const std::string& content, std::string& problem);

} // namespace Platform
} // namespace ZAV
