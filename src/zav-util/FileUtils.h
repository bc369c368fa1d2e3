#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Util {
namespace FileUtils {

/// Extracts the last component of a path.
/// \return what follows the last "/" or "\"; the whole path if it has neither
std::string baseName(const std::string& path);

/// Appends the lines of a text file, without line ends, to `lines`. A line ends in LF or CR LF; the last one
/// may lack it.
/// \throw UtilException if the file cannot be opened or read; `lines` may then hold a part of it
void readLines(const std::string& fileName, std::vector<std::string>& lines);

} // namespace FileUtils
} // namespace Util
} // namespace ZAV
