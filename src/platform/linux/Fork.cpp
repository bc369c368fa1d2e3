#include "platform/Process.h"

#include "NativeLock.h"

#include <atomic>
#include <list>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

/// The function behind `pthread_atfork`, which passes the registering library. At process end the C library
/// removes that library's handlers, and crashes the process if another thread is forking then. Registered for
/// no library, they stay.
extern "C" int registerAtFork(void (*prepare)(), void (*parent)(), void (*child)(), void* library) noexcept
    __asm__("__register_atfork");

namespace ZAV {
namespace Platform {

namespace {

std::atomic<unsigned> generation{0};
std::atomic<int> rememberedId{0}; // 0 until the library is loaded

void (*takeLocks)() = nullptr;
void (*renewLocks)() = nullptr;

struct Handlers {
    void (*before)();
    void (*inChild)();
};

/// Complete once the library is loaded.
struct AllHandlers : NeverDestroyed<AllHandlers> {
    std::list<Handlers> list;
};

void prepareFork() {
    for (const Handlers& handlers : AllHandlers::instance().list) {
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
    for (const Handlers& handlers : AllHandlers::instance().list) {
        handlers.inChild();
    }
}

const AllHandlers& madeAtLoad = AllHandlers::instance();

void* map(std::size_t size) {
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return mapped;
}

} // namespace

void registerForkLockHandlers(void (*take)(), void (*releaseInParent)(), void (*renewInChild)()) {
    rememberedId.store(getpid(), std::memory_order_relaxed);
    takeLocks = take;
    renewLocks = renewInChild;
    registerAtFork(prepareFork, releaseInParent, becomeChild, nullptr);
}

void atFork(void (*before)(), void (*inChild)()) {
    AllHandlers::instance().list.push_back({before, inChild});
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
