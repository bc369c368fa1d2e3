#include "platform/Terminal.h"

#include <unistd.h>

namespace ZAV {
namespace Platform {

bool showsColors() {
    return isatty(STDOUT_FILENO) == 1;
}

} // namespace Platform
} // namespace ZAV
