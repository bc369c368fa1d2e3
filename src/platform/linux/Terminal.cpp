#include "platform/Terminal.h"

#include <unistd.h>

namespace ZAV {
namespace Platform {

bool isTerminal(StandardStream stream) {
    return isatty(stream == STANDARD_OUTPUT ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

bool showsColors() {
    return isTerminal(STANDARD_OUTPUT);
}

} // namespace Platform
} // namespace ZAV
