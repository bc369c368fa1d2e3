#pragma once

#include <atomic>
#include <cstdlib>
#include <string>
#include <windows.h>

namespace ZAV::TestSupport {

constexpr int CODE_OF_KILLED = 137;

/// The ways in which a program can be told to end, and the resulting exit code.
constexpr struct {
    const char* name;
    int exitCode;
} WAYS_TO_DIE[] = {{"kill", CODE_OF_KILLED}};

[[noreturn]] inline void killThisProcess() {
    TerminateProcess(GetCurrentProcess(), CODE_OF_KILLED);
    std::abort();
}

/// No program is told to end in this way here.
inline void limitMemory() {}

/// \param status what `std::system` has returned
inline int exitCodeOf(int status) {
    return status;
}

/// Numbers in a memory-mapped file, which outlive the process.
inline std::atomic<int>* numbersIn(const std::string& path, int count) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0,
                                              static_cast<DWORD>(count) * sizeof(std::atomic<int>), nullptr);
    return static_cast<std::atomic<int>*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
}

} // namespace ZAV::TestSupport
