#pragma once

#include "records/RecordStream.h"

#include <cstddef>
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

    /// Sees every record of every input, before `print` and also where the record is not wanted.
    /// \param input the number of the input that the stream is
    virtual void observe(std::size_t input, const RecordStream& stream);

    /// Appends what is shown of a record.
    virtual void print(std::size_t input, RecordStream& stream, std::string& text) = 0;

    /// Appends what is shown behind all records.
    virtual void printEnd(std::string& text);
};

} // namespace Tools
} // namespace ZAV
