#include "printers/Printer.h"

#include "terminal/Paint.h"

namespace ZAV {
namespace Tools {

namespace {

class LinePrinter : public Printer {
public:
    LinePrinter(bool hasColors, bool hasSources) : hasColors_(hasColors), hasSources_(hasSources) {}

    void print(RecordStream& stream, std::string& text) override;
    void printGap(std::string& text) override;

private:
    bool hasColors_;
    bool hasSources_;
};

Paint paintOfRecord(const Fields& fields) {
    return fields.hasLevel ? paintOf(fields.level) : Paint::PLAIN;
}

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

} // namespace

std::unique_ptr<Printer> makeLinePrinter(bool hasColors, bool hasSources) {
    return std::make_unique<LinePrinter>(hasColors, hasSources);
}

} // namespace Tools
} // namespace ZAV
