#pragma once

#include "zav-util/Properties.h"

#include <sstream>
#include <streambuf>
#include <string>

namespace ZAV {
namespace Tools {

/// \return the properties with folders that cannot exist and without a queue file, so that a trial finds none of the
///         program's files
Util::Properties withoutFolders(const Util::Properties& properties);

/// Has the library itself judge a configuration, by an `init` and a `finish` in this process.
/// \return the text that `init` throws or, if it does not, the first line that it reports on the standard error stream;
///         empty if there is neither
std::string initError(const Util::Properties& properties);

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
