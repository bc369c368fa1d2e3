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

std::uint64_t processIdSpace() {
    return 0;
}

bool isProcessAlive(int id) {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
    if (process == nullptr) {
        return GetLastError() == ERROR_ACCESS_DENIED;
    }
    const bool isRunning = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return isRunning;
}

} // namespace Platform
} // namespace ZAV
