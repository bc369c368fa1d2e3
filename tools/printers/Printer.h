#pragma once

#include "records/RecordStream.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Gives records the form in which they are shown.
class Printer {
public:
    Printer() = default;
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    /// Appends what is shown of a record.
    virtual void print(RecordStream& stream, std::string& text) = 0;

    /// Appends what is shown between two records of which the second does not follow the first.
    virtual void printGap(std::string& text);

    /// Appends what is shown behind all records.
    virtual void printEnd(std::string& text);
};

} // namespace Tools
} // namespace ZAV
