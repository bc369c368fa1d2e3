#pragma once

#include "printers/Printer.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Shows, instead of the records, how many there are of each logger and level.
class CountPrinter : public Printer {
public:
    void print(RecordStream& stream, std::string& text) override;
    void printEnd(std::string& text) override;

private:
    static constexpr std::size_t COLUMNS = 8; ///< the six levels, configuration messages, and what is neither

    using Counts = std::array<std::uint64_t, COLUMNS>;

    std::map<std::string, Counts, std::less<>> counts_;
};

} // namespace Tools
} // namespace ZAV
