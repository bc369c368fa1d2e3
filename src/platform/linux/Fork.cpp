#include "platform/Process.h"

#include "NativeLock.h"

#include <atomic>
#include <list>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

/// What `pthread_atfork` calls, with the library that registers. When the process ends, the C library takes
/// the library's registrations away, and ends the process by a signal if another thread is forking then. So
/// this one is registered for no library, and stays.
extern "C" int registerAtFork(void (*prepare)(), void (*parent)(), void (*child)(), void* library) noexcept
    __asm__("__register_atfork");

namespace ZAV {
namespace Platform {

namespace {

std::atomic<unsigned> generation{0};
std::atomic<int> rememberedId{0}; // until the library is loaded

void (*takeLocks)() = nullptr;
void (*renewLocks)() = nullptr;

struct Handlers {
    void (*before)();
    void (*inChild)();
};

/// Complete once the library is loaded. Never destroyed, since threads may still fork while the process ends.
std::list<Handlers>& allHandlers() {
    static std::list<Handlers>& handlers = *new std::list<Handlers>;
    return handlers;
}

void prepareFork() {
    for (const Handlers& handlers : allHandlers()) {
        if (handlers.before != nullptr) {
            handlers.before();
        }
    }
    takeLocks();
}

void becomeChild() {
    generation.store(forkGeneration() + 1, std::memory_order_relaxed);
    rememberedId.store(getpid(), std::memory_order_relaxed);
    renewLocks();
    for (const Handlers& handlers : allHandlers()) {
        handlers.inChild();
    }
}

/// So that no thread makes it while another one forks.
const std::list<Handlers>& madeAtLoad = allHandlers();

void* map(std::size_t size) {
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return mapped;
}

} // namespace

void haveForksDealWithLocks(void (*take)(), void (*releaseInParent)(), void (*renewInChild)()) {
    rememberedId.store(getpid(), std::memory_order_relaxed);
    takeLocks = take;
    renewLocks = renewInChild;
    registerAtFork(prepareFork, releaseInParent, becomeChild, nullptr);
}

void atFork(void (*before)(), void (*inChild)()) {
    allHandlers().push_back({before, inChild});
}

unsigned forkGeneration() noexcept {
    return generation.load(std::memory_order_relaxed);
}

int rememberedProcessId() noexcept {
    const int remembered = rememberedId.load(std::memory_order_relaxed);
    return remembered != 0 ? remembered : getpid();
}

ForkedMemory::ForkedMemory(std::size_t size) : size_(size), memory_(map(size)) {}

ForkedMemory::~ForkedMemory() {
    munmap(memory_, size_);
}

} // namespace Platform
} // namespace ZAV
