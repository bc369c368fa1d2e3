#pragma once

#include "records/Layout.h"

#include <string>

namespace ZAV {
namespace Tools {

/// What the user named to be read.
struct InputSpec {
    enum Kind {
        FILE_OR_SERIES, ///< the series of that base name if it has members, as `FILE` otherwise
        FILE,           ///< with the files that were rolled away from it
        SERIES,
        STANDARD_INPUT
    };

    std::string path; ///< of the file, or of a series' files without the digit at their end
    Kind kind = FILE_OR_SERIES;
    LineForm layout;           ///< as far as it is known beforehand
    bool mayBeMissing = false; ///< as long as its folder is there and can be read
    bool mayBeLink = false;    ///< out of its folder: the user has typed the path of this very file
};

} // namespace Tools
} // namespace ZAV
