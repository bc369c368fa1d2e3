#pragma once

#include "explain/Explanation.h"
#include "log/Level.h"

#include <string>

namespace ZAV {
namespace Tools {

// An explanation as readable text, in whole lines.

/// \return a table of the loggers against the appenders, with the lowest level that is written
std::string tableText(const Explanation& explanation);

/// \return a line for each appender: what it writes from a logger, and why not more
std::string routesText(const Explanation& explanation, const std::string& logger);

/// \return whether the logger lets a message through, and a line for each appender
/// \param withColors whether the word "written" is coloured
std::string messageText(const Explanation& explanation, const std::string& logger, Log::Level::LogLevel level,
                        bool withColors);

} // namespace Tools
} // namespace ZAV
