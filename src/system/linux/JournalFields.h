#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class LogMessage;

/// \return the fields of a journal entry, each as "NAME=value": everything in the message, with the text excluding the
///         pairs. If names collide, the message's own pairs get the name before those of the context.
std::vector<std::string> journalFieldsOf(const LogMessage& message);

} // namespace Log
} // namespace ZAV
