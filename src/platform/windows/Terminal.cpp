#include "platform/Terminal.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

bool showsColors() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != 0 &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace Platform
} // namespace ZAV
