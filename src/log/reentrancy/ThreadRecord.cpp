#include "log/reentrancy/ThreadRecord.h"

namespace ZAV {
namespace Log {

namespace {

thread_local ThreadRecord record{};

} // namespace

ThreadRecord& threadRecord() noexcept {
    return record;
}

} // namespace Log
} // namespace ZAV
