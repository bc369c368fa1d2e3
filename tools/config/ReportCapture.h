#pragma once

#include <sstream>
#include <streambuf>
#include <string>

namespace ZAV {
namespace Tools {

/// While it exists, captures what the library reports on the standard error stream, instead of showing it.
class ReportCapture {
public:
    ReportCapture();
    ~ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;

    /// \return the first line that was reported; empty if there is none
    std::string firstLine() const;

private:
    std::ostringstream reports_;
    std::streambuf* const shown_;
};

} // namespace Tools
} // namespace ZAV
