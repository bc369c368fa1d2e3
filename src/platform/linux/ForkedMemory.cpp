#include "platform/ForkedMemory.h"

#include <new>
#include <sys/mman.h>

namespace ZAV {
namespace Platform {

namespace {

void* map(std::size_t size) {
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return mapped;
}

} // namespace

ForkedMemory::ForkedMemory(std::size_t size) : size_(size), memory_(map(size)) {}

ForkedMemory::~ForkedMemory() {
    munmap(memory_, size_);
}

} // namespace Platform
} // namespace ZAV
