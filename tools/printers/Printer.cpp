#include "printers/Printer.h"

namespace ZAV {
namespace Tools {

void Printer::observe(std::size_t, const RecordStream&) {}

void Printer::printEnd(std::string&) {}

} // namespace Tools
} // namespace ZAV
