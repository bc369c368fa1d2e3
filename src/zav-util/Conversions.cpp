#include "zav-util/Conversions.h"

#include "zav-util/UtilException.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace ZAV {
namespace Util {

namespace {

template <typename Number>
std::string toDecimal(Number number) {
    char digits[32];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, number);
    return std::string(digits, result.ptr);
}

} // namespace

std::int32_t toInteger(const std::string& text) {
    char* end = nullptr;
    const long long number = std::strtoll(text.c_str(), &end, 10);
    if (end != text.c_str() + text.size()) {
        throw UtilException("Can't convert " + text + " to integer");
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

std::string toString(std::uint64_t number) {
    return toDecimal(number);
}

std::string toString(std::int64_t number) {
    return toDecimal(number);
}

std::string format(const char* pattern, ...) {
    char buffer[1024];
    std::va_list arguments;
    va_start(arguments, pattern);
    const int length = std::vsnprintf(buffer, sizeof buffer, pattern, arguments);
    va_end(arguments);
    return length < 0 ? std::string() : std::string(buffer);
}

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
