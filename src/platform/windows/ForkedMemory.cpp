#include "platform/ForkedMemory.h"

#include <cstring>
#include <new>

namespace ZAV {
namespace Platform {

ForkedMemory::ForkedMemory(std::size_t size) : size_(size), memory_(::operator new(size)) {
    std::memset(memory_, 0, size_);
}

ForkedMemory::~ForkedMemory() {
    ::operator delete(memory_);
}

} // namespace Platform
} // namespace ZAV
