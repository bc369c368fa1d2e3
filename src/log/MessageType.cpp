#include "log/MessageType.h"

#include "log/LogException.h"

namespace ZAV {
namespace Log {

MessageType messageTypeFromString(const std::string& name) {
    if (name == "LOG") {
        return LOG;
    }
    if (name == "CFG") {
        return CFG;
    }
    throw LogException("There is no '" + name + "' MessageType defined.");
}

} // namespace Log
} // namespace ZAV
