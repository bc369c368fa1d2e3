#pragma once

#include "platform/FileRules.h"
#include "zav-util/TimeUtils.h"

namespace ZAV {
namespace Log {

class AppenderSettings;

/// What the file appenders do only where the configuration asks for it.
struct FileOptions {
    bool escape = false;            ///< whether each message is kept on one line
    Platform::FileRules rules;      ///< how files are found and made
    Util::TimeUtils::Time recovery; ///< how often `FileAppender` looks after its live file; 0 for never
    bool writesBatches = false;     ///< whether the lines of a round of the consumer are one write

    /// Takes the settings that are present; a `fileMode` that is no mode counts as absent.
    /// \throw LogException if the count of `recovery` is no number
    void read(const AppenderSettings& settings);
};

} // namespace Log
} // namespace ZAV
