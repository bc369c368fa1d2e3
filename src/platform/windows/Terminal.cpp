#include "platform/Terminal.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

bool isTerminal(StandardStream stream) {
    DWORD mode = 0;
    const DWORD number = stream == STANDARD_OUTPUT ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
    return GetConsoleMode(GetStdHandle(number), &mode) != 0;
}

bool showsColors() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != 0 &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace Platform
} // namespace ZAV
