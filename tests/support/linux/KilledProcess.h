#pragma once

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ZAV::TestSupport {

/// The ways in which a program can be told to end, and the resulting exit code as a shell reports it.
constexpr struct {
    const char* name;
    int exitCode;
} WAYS_TO_DIE[] = {{"kill", 128 + SIGKILL},
                   {"fault", 128 + SIGSEGV},
                   {"exception", 128 + SIGABRT},
                   {"memory", 128 + SIGABRT}};

[[noreturn]] inline void killThisProcess() {
    kill(getpid(), SIGKILL);
    std::abort();
}

/// Limits the process's memory to its current size and a little more.
inline void limitMemory() {
    constexpr rlim_t MORE = rlim_t{32} << 20U;
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t most = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + MORE;
    const struct rlimit limit = {most, most};
    setrlimit(RLIMIT_AS, &limit);
}

/// \param status what `std::system` has returned
inline int exitCodeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Numbers in a memory-mapped file, which outlive the process.
inline std::atomic<int>* numbersIn(const std::string& path, int count) {
    const std::size_t size = static_cast<std::size_t>(count) * sizeof(std::atomic<int>);
    const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    if (ftruncate(file, static_cast<off_t>(size)) != 0) {
        std::exit(EXIT_FAILURE);
    }
    return static_cast<std::atomic<int>*>(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
}

} // namespace ZAV::TestSupport
