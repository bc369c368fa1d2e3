#pragma once

#include "records/Layout.h"

#include <string>

namespace ZAV {
namespace Tools {

/// An input that the user has named.
struct InputSpec {
    enum Kind {
        FILE_OR_SERIES, ///< the series of that base name if it has members; otherwise as `FILE`
        FILE,           ///< with the files rolled away from it
        SERIES,
        STANDARD_INPUT
    };

    std::string path; ///< of the file, or of the series without the final digit
    Kind kind = FILE_OR_SERIES;
    LineForm layout;           ///< as far as it is known beforehand
    bool mayBeMissing = false; ///< as long as its folder is there and can be read
    bool mayBeLink = false;    ///< may lead out of its folder: the user has typed this very path
};

} // namespace Tools
} // namespace ZAV
