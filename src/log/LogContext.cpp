#include "log/LogContext.h"

#include "log/reentrancy/ThreadContext.h"
#include "log/reentrancy/ThreadRecord.h"

namespace ZAV {
namespace Log {

void LogContext::begin(std::string_view key, const TaggedValue& value) {
    ThreadContext::own().add(this, key, value);
}

/// The thread may be ending, and have none any more.
LogContext::~LogContext() {
    if (ThreadContext* const context = threadRecord().context) {
        context->remove(this);
    }
}

} // namespace Log
} // namespace ZAV
