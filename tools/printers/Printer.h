#pragma once

#include "records/RecordStream.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Formats records for output.
class Printer {
public:
    Printer() = default;
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    /// Appends the text of a record.
    virtual void print(RecordStream& stream, std::string& text) = 0;

    /// Appends what separates two records of which the second does not directly follow the first.
    virtual void printGap(std::string& text);

    /// Appends what follows all records.
    virtual void printEnd(std::string& text);
};

} // namespace Tools
} // namespace ZAV
