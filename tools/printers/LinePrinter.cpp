#include "printers/LinePrinter.h"

#include "terminal/Paint.h"

namespace ZAV {
namespace Tools {

namespace {

Paint paintOfRecord(const Fields& fields) {
    return fields.hasLevel ? paintOf(fields.level) : Paint::PLAIN;
}

} // namespace

void LinePrinter::print(std::size_t, RecordStream& stream, std::string& text) {
    const Record& record = stream.record();
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

} // namespace Tools
} // namespace ZAV
