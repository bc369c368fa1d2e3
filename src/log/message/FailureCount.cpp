#include "log/message/FailureCount.h"

#include <atomic>

namespace ZAV {
namespace Log {
namespace FailureCount {

namespace {

std::atomic<std::uint64_t> failures{0};

} // namespace

void add() noexcept {
    failures.fetch_add(1, std::memory_order_relaxed);
}

std::uint64_t get() noexcept {
    return failures.load(std::memory_order_relaxed);
}

} // namespace FailureCount
} // namespace Log
} // namespace ZAV
