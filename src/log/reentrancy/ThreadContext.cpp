#include "log/reentrancy/ThreadContext.h"

#include "log/reentrancy/ThreadRecord.h"
#include "log/text/PackedPairs.h"
#include "platform/ThreadSlot.h"

#include <memory>

namespace ZAV {
namespace Log {

namespace {

/// Frees what the record leads to when a thread ends, which may still log afterwards. Never destroyed, since
/// threads may log while the process ends.
Platform::ThreadSlot& slot() {
    static Platform::ThreadSlot& slot = *new Platform::ThreadSlot([](void* context) {
        threadRecord().context = nullptr;
        delete static_cast<ThreadContext*>(context);
    });
    return slot;
}

/// So that no thread makes it while another one forks.
const Platform::ThreadSlot& madeAtLoad = slot();

} // namespace

ThreadContext& ThreadContext::own() {
    ThreadRecord& thread = threadRecord();
    if (thread.context == nullptr) {
        auto made = std::make_unique<ThreadContext>();
        slot().set(made.get());
        thread.context = made.release();
    }
    return *thread.context;
}

void ThreadContext::add(const void* owner, std::string_view key, const TaggedValue& value) {
    const std::size_t begin = bytes_.size();
    entries_.push_back({owner, 0});
    try {
        bytes_.resize(begin + packedPairSize(key, value));
    } catch (...) {
        entries_.pop_back();
        throw;
    }
    const char* const end = packPair(bytes_.data() + begin, key, value);
    bytes_.resize(static_cast<std::size_t>(end - bytes_.data()));
    entries_.back().size = bytes_.size() - begin;
}

void ThreadContext::remove(const void* owner) noexcept {
    if (!entries_.empty() && entries_.back().owner == owner) { // as a rule
        bytes_.resize(bytes_.size() - entries_.back().size);
        entries_.pop_back();
        return;
    }
    std::size_t end = bytes_.size();
    for (auto entry = entries_.end(); entry != entries_.begin();) {
        --entry;
        const std::size_t begin = end - entry->size;
        if (entry->owner == owner) {
            const auto first = bytes_.begin();
            bytes_.erase(first + static_cast<std::ptrdiff_t>(begin),
                         first + static_cast<std::ptrdiff_t>(end));
            entries_.erase(entry);
            return;
        }
        end = begin;
    }
}

} // namespace Log
} // namespace ZAV
