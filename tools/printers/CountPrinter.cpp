#include "printers/CountPrinter.h"

#include <algorithm>
#include <functional>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::array<const char*, 7> TITLES = {"AUDIT", "ERROR", "WARNING", "INFO", "DEBUG", "TRACE", "CFG"};
constexpr std::size_t COLUMN_OF_CFG = TITLES.size() - 1;
constexpr std::size_t COLUMN_WIDTH = 10;

std::size_t columnOf(const Fields& fields) {
    static constexpr int MOST_SEVERE = Log::Level::LEVEL_AUDIT;
    static constexpr int STEP = MOST_SEVERE - Log::Level::LEVEL_ERROR;
    return fields.hasLevel ? static_cast<std::size_t>((MOST_SEVERE - fields.level) / STEP) : COLUMN_OF_CFG;
}

void appendLeft(std::string& text, const std::string& cell, std::size_t width) {
    text += cell;
    text.append(width - std::min(width, cell.size()), ' ');
}

void appendRight(std::string& text, const std::string& cell) {
    text += ' ';
    text.append(COLUMN_WIDTH - std::min(COLUMN_WIDTH, cell.size()), ' ');
    text += cell;
}

} // namespace

void CountPrinter::print(RecordStream& stream, std::string&) {
    if (!stream.record().hasTime) {
        return;
    }
    const Fields& fields = stream.fields();
    auto entry = counts_.find(fields.logger);
    if (entry == counts_.end()) {
        entry = counts_.emplace(fields.logger, Counts{}).first;
    }
    ++entry->second[columnOf(fields)];
}

void CountPrinter::printEnd(std::string& text) {
    const std::string title = "logger";
    std::size_t width = title.size();
    for (const auto& [logger, counts] : counts_) {
        width = std::max(width, logger.size());
    }
    appendLeft(text, title, width);
    for (const char* column : TITLES) {
        appendRight(text, column);
    }
    text += '\n';
    for (const auto& [logger, counts] : counts_) {
        appendLeft(text, logger, width);
        for (const std::uint64_t count : counts) {
            appendRight(text, std::to_string(count));
        }
        text += '\n';
    }
}

} // namespace Tools
} // namespace ZAV
