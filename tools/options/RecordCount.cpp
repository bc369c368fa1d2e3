#include "options/RecordCount.h"

#include <charconv>
#include <system_error>

namespace ZAV {
namespace Tools {

namespace {

std::size_t readCount(const std::string& option, const std::string& text) {
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, count);
    if (result.ec != std::errc() || result.ptr != end) {
        throw CLI::ValidationError(option, "'" + text + "' is no number of records");
    }
    return count;
}

} // namespace

CLI::Option* addRecordCount(CLI::App& command, const std::string& name, std::size_t& count,
                            const std::string& meaning) {
    const auto read = [name, &count](const std::string& text) { count = readCount(name, text); };
    return command.add_option_function<std::string>(name, read, meaning)->type_name("N");
}

} // namespace Tools
} // namespace ZAV
