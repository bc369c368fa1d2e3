#include "platform/Process.h"

#include <cstring>
#include <new>
#include <process.h>
#include <winsock2.h> // includes <windows.h>, which must not come first

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

void atProcessEnd(void (*)()) {
    // When a library is notified of the process's end, the other threads have already been killed, wherever
    // they were: there is nothing left to wait for, and a lock that one of them was holding is never
    // released.
}

bool isOnlyThread() noexcept {
    return false;
}

void markAsServing() noexcept {
    // `isOnlyThread` is always false here.
}

void keepLibraryLoaded() {
    const auto placeInLibrary = reinterpret_cast<const char*>(&keepLibraryLoaded);
    HMODULE library;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, placeInLibrary,
                       &library);
}

void atFork(void (*)(), void (*)()) {
    // No process forks here.
}

unsigned forkGeneration() noexcept {
    return 0;
}

int rememberedProcessId() noexcept {
    return _getpid();
}

ForkedMemory::ForkedMemory(std::size_t size) : size_(size), memory_(::operator new(size)) {
    std::memset(memory_, 0, size_);
}

ForkedMemory::~ForkedMemory() {
    ::operator delete(memory_);
}

namespace {

/// The system counts starts and cleanups of its sockets library, so calls from several threads may overlap.
class SocketsLibrary {
public:
    SocketsLibrary() {
        WSADATA ignored;
        WSAStartup(MAKEWORD(1, 1), &ignored);
    }
    ~SocketsLibrary() { WSACleanup(); }
    SocketsLibrary(const SocketsLibrary&) = delete;
    SocketsLibrary& operator=(const SocketsLibrary&) = delete;
};

} // namespace

bool readHostName(std::string& name) {
    const SocketsLibrary started;
    char buffer[256] = {};
    if (gethostname(buffer, sizeof buffer - 1) != 0) {
        return false;
    }
    name = buffer;
    return true;
}

} // namespace Platform
} // namespace ZAV
