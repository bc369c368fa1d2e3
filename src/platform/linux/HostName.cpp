#include "platform/HostName.h"

#include <unistd.h>

namespace ZAV {
namespace Platform {

bool readHostName(std::string& name) {
    char buffer[256] = {};
    if (gethostname(buffer, sizeof buffer - 1) != 0) {
        return false;
    }
    name = buffer;
    return true;
}

} // namespace Platform
} // namespace ZAV
