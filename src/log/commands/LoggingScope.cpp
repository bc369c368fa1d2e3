#include "log/commands/LoggingScope.h"

#include "log/commands/FailureReport.h"

#include <utility>

namespace ZAV {
namespace Log {

namespace {

thread_local LoggingScope* outermostScope = nullptr;

} // namespace

LoggingScope::LoggingScope() {
    if (outermostScope == nullptr) {
        outermostScope = this;
    }
    outermost_ = outermostScope;
}

LoggingScope::~LoggingScope() {
    if (!isNested()) {
        outermostScope = nullptr;
        makeCalls();
    }
}

bool LoggingScope::isOpen() {
    return outermostScope != nullptr;
}

void LoggingScope::defer(std::function<void()> call) {
    outermost_->calls_.push_back({std::move(call), FailureReport::isBeingDelivered()});
}

void LoggingScope::makeCalls() noexcept {
    for (const DeferredCall& call : calls_) {
        try {
            const FailureReport::Answer answer(call.answersReport);
            call.make();
        } catch (...) {
            continue;
        }
    }
}

} // namespace Log
} // namespace ZAV
