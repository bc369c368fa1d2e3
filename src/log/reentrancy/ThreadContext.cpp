#include "log/reentrancy/ThreadContext.h"

#include "log/reentrancy/ThreadRecord.h"
#include "log/text/PackedPairs.h"
#include "platform/ThreadSlot.h"

#include <memory>

namespace ZAV {
namespace Log {

namespace {

/// Never destroyed, since threads may log while the process ends.
Platform::ThreadSlot& slot() {
    static Platform::ThreadSlot& slot = *new Platform::ThreadSlot(ThreadContext::end);
    return slot;
}

/// So that no thread makes it while another one forks.
const Platform::ThreadSlot& madeAtLoad = slot();

constexpr std::size_t KEPT_SIZE = std::size_t{64} * 1024;

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

ContextEntry& ThreadContext::add(std::string_view key, const TaggedValue& value) {
    const std::size_t begin = bytes_.size();
    ContextEntry& entry = entries_.emplace_back(*this);
    try {
        bytes_.resize(begin + packedPairSize(key, value));
    } catch (...) {
        entries_.pop_back();
        throw;
    }
    const char* const end = packPair(bytes_.data() + begin, key, value);
    bytes_.resize(static_cast<std::size_t>(end - bytes_.data()));
    entry.size = bytes_.size() - begin;
    ++open_;
    return entry;
}

void ThreadContext::remove(ContextEntry& entry) noexcept {
    ThreadContext& owner = entry.owner;
    if (&owner == threadRecord().context) {
        owner.takeOut(entry);
        owner.dropTaken();
        return;
    }
    entry.isDead.store(true, std::memory_order_release);
    owner.release(1);
}

void ThreadContext::takeOut(ContextEntry& entry) noexcept {
    std::size_t end = bytes_.size();
    for (auto other = entries_.rbegin(); &*other != &entry; ++other) { // as a rule none
        end -= other->size;
    }
    const auto last = bytes_.begin() + static_cast<std::ptrdiff_t>(end);
    bytes_.erase(last - static_cast<std::ptrdiff_t>(entry.size), last);
    entry.size = 0;
    --open_;
}

/// What a pair of unusual size took is given back.
void ThreadContext::dropTaken() noexcept {
    while (!entries_.empty() && entries_.back().size == 0) {
        entries_.pop_back();
    }
    if (bytes_.empty() && bytes_.capacity() > KEPT_SIZE) {
        std::vector<char>().swap(bytes_);
    }
}

/// Takes out what others have removed.
void ThreadContext::collect() noexcept {
    for (ContextEntry& entry : entries_) {
        if (entry.size != 0 && entry.isDead.load(std::memory_order_acquire)) {
            takeOut(entry);
            references_.fetch_add(1, std::memory_order_relaxed);
        }
    }
    dropTaken();
}

void ThreadContext::release(std::ptrdiff_t references) noexcept {
    if (references_.fetch_sub(references, std::memory_order_acq_rel) == references) {
        delete this;
    }
}

void ThreadContext::end(void* context) noexcept {
    threadRecord().context = nullptr;
    auto& ended = *static_cast<ThreadContext*>(context);
    ended.release(OWNER - ended.open_);
}

} // namespace Log
} // namespace ZAV
