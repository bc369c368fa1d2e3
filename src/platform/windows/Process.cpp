#include "platform/Process.h"

#include <process.h>
#include <windows.h>

namespace ZAV {
namespace Platform {

std::string executablePath() {
    char buffer[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, buffer, sizeof buffer);
    return std::string(buffer, length);
}

int processId() {
    return _getpid();
}

} // namespace Platform
} // namespace ZAV
