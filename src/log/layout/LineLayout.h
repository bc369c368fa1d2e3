#pragma once

#include <string>

namespace ZAV {
namespace Log {

struct MessageFields;

/// Appends what `formatLogLine` gives. The text grows at most once, and an end of line still fits in then.
void appendLogLine(std::string& text, const MessageFields& message);

/// Appends what `formatLogLineWithProcess` gives. The text grows at most once, and an end of line still fits
/// in then.
void appendLogLineWithProcess(std::string& text, const MessageFields& message);

} // namespace Log
} // namespace ZAV
