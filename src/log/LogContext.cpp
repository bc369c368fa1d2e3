#include "log/LogContext.h"

#include "log/reentrancy/ThreadContext.h"

namespace ZAV {
namespace Log {

ContextEntry& LogContext::begin(std::string_view key, const TaggedValue& value) {
    return ThreadContext::own().add(key, value);
}

LogContext::~LogContext() {
    ThreadContext::remove(entry_);
}

} // namespace Log
} // namespace ZAV
