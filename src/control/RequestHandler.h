#pragma once

#include <string>

namespace ZAV {
namespace Log {

class ControlRequest;

/// Carries requests out, by the library's public calls and in the calling thread, and words the answers.
namespace RequestHandler {

/// \param request anything but a `FLUSH`, which waits
/// \return the whole answer, with its last line feed; a failure is one, too
std::string answerTo(const ControlRequest& request);

/// \return the answer to what was done and has nothing to tell
std::string done();

/// \return the answer to what was refused
std::string refused(const std::string& reason);

/// \return whether an answer is one of those
bool isRefusal(const std::string& answer);

} // namespace RequestHandler
} // namespace Log
} // namespace ZAV
