#include "zav-util/FileUtils.h"

#include "platform/Files.h"
#include "zav-util/UtilException.h"

#include <string_view>

namespace ZAV {
namespace Util {
namespace FileUtils {

std::string baseName(const std::string& path) {
    const std::string::size_type separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

void readLines(const std::string& fileName, std::vector<std::string>& lines) {
    std::string text;
    const bool isRead = Platform::readFile(fileName, text);
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t lineFeed = rest.find('\n');
        std::string_view line = rest.substr(0, lineFeed);
        rest.remove_prefix(lineFeed == std::string_view::npos ? rest.size() : lineFeed + 1);
        if (lineFeed != std::string_view::npos && !line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
    }
    if (!isRead) {
        throw UtilException("Unable to open file: " + fileName, baseName(__FILE__), __LINE__);
    }
}

} // namespace FileUtils
} // namespace Util
} // namespace ZAV
