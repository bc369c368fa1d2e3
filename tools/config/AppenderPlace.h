#pragma once

#include "zav-util/Properties.h"

#include <string>

namespace ZAV {
namespace Tools {

/// Where an appender of a configuration writes.
struct AppenderPlace {
    enum Kind { STREAM, SINGLE_FILE, SERIES };

    /// \param appenderName an appender that the properties declare; one without a class counts as a stream
    AppenderPlace(const std::string& appenderName, const Util::Properties& properties);

    /// \return the path of the file, of a series the live one; of a stream its name
    std::string describe() const;

    Kind kind;
    std::string stream; ///< as a person calls it; without meaning for files
    std::string folder;
    std::string file;        ///< of a series the base name
    char highestDigit = '9'; ///< that a name of a series ends in
};

} // namespace Tools
} // namespace ZAV
