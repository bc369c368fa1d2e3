#include "printers/Repetitions.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t LARGEST_SIZE = 16 * 1024 * 1024;
constexpr std::size_t OVERHEAD = 160; ///< per entry, approximately

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
        text += '\0';
    }
    return text;
}

std::string processOf(const Fields& fields) {
    return fields.pid.empty() ? "" : joined({fields.program, fields.pid, fields.host});
}

std::string recordOf(const Record& record, const Fields& fields) {
    const std::string level = fields.hasLevel ? Log::Level::toString(fields.level) : "";
    return joined({record.time(), fields.logger, level, fields.file, fields.line, fields.text});
}

} // namespace

bool Repetitions::isRepeated(std::size_t input, RecordStream& stream) {
    const Fields& fields = stream.fields();
    std::string record = recordOf(stream.record(), fields);
    Seen seen = {input, processOf(fields)};
    const auto [begin, end] = seen_.equal_range(record);
    for (auto entry = begin; entry != end; ++entry) {
        const Seen& other = entry->second;
        const bool isSameProcess =
            other.process == seen.process || other.process.empty() || seen.process.empty();
        if (isSameProcess) {
            return other.input != input;
        }
    }
    keep(std::move(record), std::move(seen));
    return false;
}

void Repetitions::keep(std::string record, Seen seen) {
    size_ += record.size() + seen.process.size() + OVERHEAD;
    order_.push_back(seen_.emplace(std::move(record), std::move(seen)));
    while (size_ > LARGEST_SIZE) {
        const Table::const_iterator oldest = order_.front();
        order_.pop_front();
        size_ -= oldest->first.size() + oldest->second.process.size() + OVERHEAD;
        seen_.erase(oldest);
    }
}

} // namespace Tools
} // namespace ZAV
