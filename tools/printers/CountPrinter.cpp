#include "printers/Printer.h"

#include "zav-util/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string_view>

namespace ZAV {
namespace Tools {

namespace {

class CountPrinter : public Printer {
public:
    void print(RecordStream& stream, std::string& text) override;
    void printEnd(std::string& text) override;

private:
    static constexpr std::size_t COLUMNS = 8; ///< the six levels, configuration messages, and what is neither

    using Counts = std::array<std::uint64_t, COLUMNS>;

    std::map<std::string, Counts, std::less<>> counts_;
};

constexpr std::array<const char*, 8> TITLES = {"AUDIT", "ERROR", "WARNING", "INFO",
                                               "DEBUG", "TRACE", "CFG",     "-"};
constexpr std::size_t COLUMN_OF_CFG = 6;
constexpr std::size_t COLUMN_OF_UNKNOWN = 7; ///< shown only if needed
constexpr std::size_t COLUMN_WIDTH = 10;
constexpr std::size_t LARGEST_WIDTH = 80; ///< of the names; a longer one shifts only its own row

std::size_t columnOf(const Fields& fields) {
    static constexpr int HIGHEST_LEVEL = Log::Level::LEVEL_AUDIT;
    static constexpr int STEP = HIGHEST_LEVEL - Log::Level::LEVEL_ERROR;
    if (!fields.isTypeKnown) {
        return COLUMN_OF_UNKNOWN;
    }
    return fields.hasLevel ? static_cast<std::size_t>((HIGHEST_LEVEL - fields.level) / STEP) : COLUMN_OF_CFG;
}

/// \return the name with control characters escaped: one from a line of `json` may have line feeds, which would start a
///         new row
std::string onOneLine(const std::string& name) {
    std::string line;
    for (const char character : name) {
        const bool isControl = static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
        if (isControl) {
            Util::appendByteEscape(line, character);
        } else {
            line += character;
        }
    }
    return line;
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
    std::size_t columns = COLUMN_OF_UNKNOWN;
    for (const auto& [logger, counts] : counts_) {
        width = std::min(std::max(width, logger.size()), LARGEST_WIDTH);
        columns = counts[COLUMN_OF_UNKNOWN] != 0 ? COLUMNS : columns;
    }
    appendLeft(text, title, width);
    for (std::size_t column = 0; column < columns; ++column) {
        appendRight(text, TITLES[column]);
    }
    text += '\n';
    for (const auto& [logger, counts] : counts_) {
        appendLeft(text, onOneLine(logger), width);
        for (std::size_t column = 0; column < columns; ++column) {
            appendRight(text, std::to_string(counts[column]));
        }
        text += '\n';
    }
}

} // namespace

std::unique_ptr<Printer> makeCountPrinter() {
    return std::make_unique<CountPrinter>();
}

} // namespace Tools
} // namespace ZAV
