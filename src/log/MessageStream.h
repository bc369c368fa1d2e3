#pragma once

#include "zav-util/Export.h"

#include <sstream>
#include <string>

namespace ZAV {
namespace Log {

class Logger;

/// The stream that a logging macro writes its expression to. Its functions are not inline, to keep the
/// calling code short: most calls end at the comparison of levels.
class ZAV_LOG_API MessageStream {
public:
    MessageStream();
    ~MessageStream();
    MessageStream(const MessageStream&) = delete;
    MessageStream& operator=(const MessageStream&) = delete;

    std::ostream& stream();

    /// Logs what was put into the stream.
    /// \param operation the logger's member function for the level
    /// \param line source line
    /// \param file source file
    /// \throw what the operation throws
    void logTo(Logger& logger, void (Logger::*operation)(const std::string&, int, const std::string&),
               int line, const char* file) const;

private:
    std::ostringstream stream_;
};

} // namespace Log
} // namespace ZAV
