#include "zav-util/FileUtils.h"

#include "zav-util/UtilException.h"

#include <fstream>

namespace ZAV {
namespace Util {
namespace FileUtils {

std::string baseName(const std::string& path) {
    const std::string::size_type separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

void readLines(const std::string& fileName, std::vector<std::string>& lines) {
    std::ifstream file(fileName);
    std::string line;
    while (std::getline(file, line)) {
        const bool endedByLineFeed = !file.eof();
        if (endedByLineFeed && !line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    // A directory can be opened on some systems, but not read.
    if (!file.is_open() || file.bad()) {
        throw UtilException("Unable to open file: " + fileName, baseName(__FILE__), __LINE__);
    }
}

} // namespace FileUtils
} // namespace Util
} // namespace ZAV
