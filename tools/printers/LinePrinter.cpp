#include "printers/LinePrinter.h"

namespace ZAV {
namespace Tools {

namespace {

constexpr const char* RESET = "\x1b[0m";

/// \return an escape sequence; empty for what is shown as it is
const char* colorOf(const Fields& fields) {
    if (!fields.hasLevel) {
        return "";
    }
    switch (fields.level) {
    case Log::Level::LEVEL_AUDIT:
        return "\x1b[1;35m";
    case Log::Level::LEVEL_ERROR:
        return "\x1b[1;31m";
    case Log::Level::LEVEL_WARNING:
        return "\x1b[33m";
    case Log::Level::LEVEL_INFO:
        return "";
    case Log::Level::LEVEL_DEBUG:
    case Log::Level::LEVEL_TRACE:
        return "\x1b[2m";
    }
    return "";
}

} // namespace

void LinePrinter::print(RecordStream& stream, std::string& text) {
    const Record& record = stream.record();
    const char* color = hasColors_ ? colorOf(stream.fields()) : "";
    if (hasSources_ && !record.isContinuation) {
        text += stream.source();
        text += ": ";
    }
    text += color;
    text += record.lines;
    text += *color != '\0' ? RESET : "";
    if (!record.isCutInLine) {
        text += '\n';
    }
}

void LinePrinter::printGap(std::string& text) {
    text += "--\n";
}

} // namespace Tools
} // namespace ZAV
