#pragma once

#include "printers/Printer.h"
#include "printers/ZonedClock.h"

#include <vector>

namespace ZAV {
namespace Tools {

/// Shows each record as a JSON object on a line of its own. Records without a time are left out.
class JsonPrinter : public Printer {
public:
    void observe(std::size_t input, const RecordStream& stream) override;
    void print(std::size_t input, RecordStream& stream, std::string& text) override;

private:
    std::vector<ZonedClock> clocks_; ///< one for each input
};

} // namespace Tools
} // namespace ZAV
