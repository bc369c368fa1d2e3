#pragma once

#include "log/Appender.h"
#include "zav-util/Properties.h"

#include <string>

// The appenders of a configuration: where each writes, and which messages it takes.

namespace ZAV {
namespace Tools {

/// Where an appender of a configuration writes.
struct AppenderPlace {
    enum Kind { NO_FILE, SINGLE_FILE, SERIES, ROLLED_FILE };

    /// \param appenderName an appender that the properties declare
    AppenderPlace(const std::string& appenderName, const Util::Properties& properties);

    /// \return the path of the file, or of the live one of several; a readable name for a stream; the class of an
    ///         appender that may write anywhere
    std::string describe() const;

    Kind kind;
    std::string folder;
    std::string file;  ///< of a series, the base name
    char highestDigit; ///< of a series, the highest last digit of a name
    std::string other; ///< what `describe` returns without a file
};

/// The filters of a configured appender, created by the library itself.
class AppenderFilters {
public:
    /// \throw LogException for a setting that `init` would reject too
    AppenderFilters(const std::string& appenderName, const Util::Properties& properties);

    /// \return the first filter that rejects a message; nullptr if all accept it
    Log::MessageFilter* rejecting(const Log::LogMessage& message) const;

private:
    Log::Appender::Filters filters_;
};

} // namespace Tools
} // namespace ZAV
