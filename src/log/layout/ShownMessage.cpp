#include "log/layout/ShownMessage.h"

#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "zav-util/StandardError.h"

#include <exception>

namespace ZAV {
namespace Log {

void showOnStandardError(const char* reason, const MessageFields& message) noexcept {
    try {
        std::string line = reason;
        appendLogLine(line, message);
        Util::writeErrorLine(line);
    } catch (const std::exception&) {
        Util::writeErrorLine(reason);
    }
}

} // namespace Log
} // namespace ZAV
