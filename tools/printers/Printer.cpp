#include "printers/Printer.h"

namespace ZAV {
namespace Tools {

void Printer::printGap(std::string&) {}

void Printer::printEnd(std::string&) {}

} // namespace Tools
} // namespace ZAV
