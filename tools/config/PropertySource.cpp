#include "config/PropertySource.h"

#include "zav-util/UtilException.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace ZAV {
namespace Tools {

void requirePropertySource(const std::string& fileName) {
    constexpr std::uintmax_t LARGEST = 16 * 1024 * 1024;
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(fileName, error);
    if (std::filesystem::is_character_file(status) || std::filesystem::is_block_file(status)) {
        throw Util::UtilException("Unable to open file: " + fileName + " is a device");
    }
    const std::uintmax_t size =
        std::filesystem::is_regular_file(status) ? std::filesystem::file_size(fileName, error) : 0;
    if (!error && size > LARGEST) {
        throw Util::UtilException("Unable to open file: " + fileName +
                                  " has more than the 16 MB of the largest property file");
    }
}

} // namespace Tools
} // namespace ZAV
