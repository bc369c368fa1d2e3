#include "printers/LinePrinter.h"

#include "terminal/Paint.h"

namespace ZAV {
namespace Tools {

namespace {

Paint paintOfRecord(const Fields& fields) {
    return fields.hasLevel ? paintOf(fields.level) : Paint::PLAIN;
}

} // namespace

void LinePrinter::print(RecordStream& stream, std::string& text) {
    const Record& record = stream.record();
    if (hasSources_ && !record.isContinuation) {
        text += stream.source();
        text += ": ";
    }
    const Paint paint = hasColors_ ? paintOfRecord(stream.fields()) : Paint::PLAIN;
    if (paint == Paint::PLAIN) {
        text += record.lines;
    } else {
        text += painted(paint, record.lines);
    }
    if (!record.isCutInLine) {
        text += '\n';
    }
}

void LinePrinter::printGap(std::string& text) {
    text += "--\n";
}

} // namespace Tools
} // namespace ZAV
