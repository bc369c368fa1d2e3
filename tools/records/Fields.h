#pragma once

#include "log/Level.h"

#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Tools {

/// A pair of a key and a value.
struct RecordPair {
    std::string key;
    std::string text;
    bool isText; ///< false for a number or another JSON value, which `text` holds as in JSON
};
using RecordPairs = std::vector<RecordPair>;

/// The fields of a record, as views into its lines; those that it does not have are empty.
struct Fields {
    std::string_view program;
    std::string_view pid; ///< a decimal number
    std::string_view host;
    std::string_view logger;
    std::string_view file;
    std::string_view line;                ///< a decimal number
    std::string_view thread;              ///< a decimal number
    std::string_view text;                ///< with line feeds between its lines; known pairs are at its end
    std::string_view message;             ///< the text without those
    const RecordPairs* values = nullptr;  ///< null if they are not known
    const RecordPairs* context = nullptr; ///< the same
    bool isTypeKnown = true;
    bool hasLevel = false; ///< false for a configuration message
    Log::Level::LogLevel level = Log::Level::LEVEL_AUDIT;
};

} // namespace Tools
} // namespace ZAV
