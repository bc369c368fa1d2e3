#pragma once

#include <string>

namespace ZAV {
namespace Log {

class LogMessage;

/// Appends what `formatLogLine` gives. The text grows at most once, and an end of line still fits in then.
void appendLogLine(std::string& text, const LogMessage& message);

/// Appends what `formatLogLineWithProcess` gives. The text grows at most once, and an end of line still fits
/// in then.
void appendLogLineWithProcess(std::string& text, const LogMessage& message);

} // namespace Log
} // namespace ZAV
