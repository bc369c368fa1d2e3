#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class LogMessage;

/// \return the fields of an entry of the journal, each as "NAME=value": all that a message has, its text without
///         the pairs. Of pairs whose names are the same, the message's own have the first choice, then those
///         of the context.
std::vector<std::string> journalFieldsOf(const LogMessage& message);

} // namespace Log
} // namespace ZAV
