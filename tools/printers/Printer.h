#pragma once

#include "records/RecordStream.h"

#include <memory>
#include <string>

namespace ZAV {
namespace Tools {

/// Formats records for output. Each kind of printer is a class in a source file of its own.
class Printer {
public:
    Printer() = default;
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    /// Appends the text of a record.
    virtual void print(RecordStream& stream, std::string& text) = 0;

    /// Appends what separates two records of which the second does not directly follow the first.
    virtual void printGap(std::string&) {}

    /// Appends what follows all records.
    virtual void printEnd(std::string&) {}
};

/// Makes one that shows records as they are in their files.
/// \param hasColors true to colour each record by its level
/// \param hasSources true to begin each record with the path of its file
std::unique_ptr<Printer> makeLinePrinter(bool hasColors, bool hasSources);

/// Makes one that shows each record as a JSON object on a line of its own. Records without a time are left
/// out, unless they continue one that has one.
std::unique_ptr<Printer> makeJsonPrinter();

/// Makes one that shows, instead of the records, how many there are of each logger and level.
std::unique_ptr<Printer> makeCountPrinter();

} // namespace Tools
} // namespace ZAV
