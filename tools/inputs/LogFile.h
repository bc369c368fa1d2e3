#pragma once

#include "platform/InputFile.h"
#include "records/Layout.h"

#include <cstdint>
#include <string>

namespace ZAV {
namespace Tools {

/// A file that is open, and from where it is to be read.
struct LogFile {
    std::string path; ///< as the user gave it, or of the member of the series
    Platform::InputFile file;
    LineForm layout; ///< as far as it is known beforehand
    std::uint64_t offset = 0;
};

} // namespace Tools
} // namespace ZAV
