#include "log/commands/DeferredCalls.h"

#include <utility>

namespace ZAV {
namespace Log {

namespace {

thread_local DeferredCalls* outermostScope = nullptr;

} // namespace

DeferredCalls::DeferredCalls() : outermost_(outermostScope == nullptr) {
    if (outermost_) {
        outermostScope = this;
    }
}

DeferredCalls::~DeferredCalls() {
    if (outermost_) {
        outermostScope = nullptr;
        makeCalls();
    }
}

bool DeferredCalls::areCollected() {
    return outermostScope != nullptr;
}

void DeferredCalls::add(std::function<void()> call) {
    outermostScope->calls_.push_back(std::move(call));
}

void DeferredCalls::makeCalls() noexcept {
    for (const std::function<void()>& call : calls_) {
        try {
            call();
        } catch (...) {
            continue;
        }
    }
}

} // namespace Log
} // namespace ZAV
