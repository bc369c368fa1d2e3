#pragma once

#include "printers/Printer.h"

namespace ZAV {
namespace Tools {

/// Shows records as they are in their files, optionally after the files' paths.
class LinePrinter : public Printer {
public:
    /// \param hasColors true to colour each record by its level
    /// \param hasSources true to begin each record with the path of its file
    LinePrinter(bool hasColors, bool hasSources) : hasColors_(hasColors), hasSources_(hasSources) {}

    void print(RecordStream& stream, std::string& text) override;
    void printGap(std::string& text) override;

private:
    bool hasColors_;
    bool hasSources_;
};

} // namespace Tools
} // namespace ZAV
