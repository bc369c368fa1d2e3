#pragma once

#include "records/Layout.h"

#include <string>

namespace ZAV {
namespace Tools {

/// What the user named to be read.
struct InputSpec {
    enum Kind {
        FILE_OR_SERIES, ///< the file of that path if there is one, the series of that base name otherwise
        FILE,
        SERIES,
        STANDARD_INPUT
    };

    std::string path; ///< of the file, or of a series' files without the digit at their end
    Kind kind = FILE_OR_SERIES;
    Layout layout = Layout::UNKNOWN; ///< if it is known beforehand
    bool mayBeMissing = false;       ///< as long as its folder is there and can be read
};

} // namespace Tools
} // namespace ZAV
