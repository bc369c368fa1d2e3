#pragma once

#include "printers/Printer.h"

namespace ZAV {
namespace Tools {

/// Shows each record as a JSON object on a line of its own. Records without a time are left out, unless they
/// continue one that has one.
class JsonPrinter : public Printer {
public:
    void print(RecordStream& stream, std::string& text) override;
};

} // namespace Tools
} // namespace ZAV
