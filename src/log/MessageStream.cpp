#include "log/MessageStream.h"

#include "log/Logger.h"

namespace ZAV {
namespace Log {

MessageStream::MessageStream() = default;

MessageStream::~MessageStream() = default;

std::ostream& MessageStream::stream() {
    return stream_;
}

void MessageStream::logTo(Logger& logger,
                          void (Logger::*operation)(const std::string&, int, const std::string&), int line,
                          const char* file) const {
    (logger.*operation)(stream_.str(), line, file);
}

} // namespace Log
} // namespace ZAV
