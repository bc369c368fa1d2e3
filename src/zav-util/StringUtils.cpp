#include "zav-util/StringUtils.h"

namespace ZAV {
namespace Util {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::string::size_type begin = text.find_first_not_of(separator);
    while (begin != std::string::npos) {
        const std::string::size_type end = text.find(separator, begin);
        pieces.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(separator, end);
    }
    return pieces;
}

} // namespace Util
} // namespace ZAV
