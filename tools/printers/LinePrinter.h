#pragma once

#include "printers/Printer.h"

namespace ZAV {
namespace Tools {

/// Shows records as they stand in their files.
class LinePrinter : public Printer {
public:
    /// \param hasColors true to colour each record by its level
    explicit LinePrinter(bool hasColors) : hasColors_(hasColors) {}

    void print(std::size_t input, RecordStream& stream, std::string& text) override;

private:
    bool hasColors_;
};

} // namespace Tools
} // namespace ZAV
