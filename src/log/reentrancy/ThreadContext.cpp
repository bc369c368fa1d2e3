#include "log/reentrancy/ThreadContext.h"

#include "log/reentrancy/LibraryCall.h"
#include "log/text/PackedPairs.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <cstring>
#include <iterator>
#include <memory>

namespace ZAV {
namespace Log {

namespace {

struct Slot : Platform::ThreadSlot, Platform::NeverDestroyed<Slot> {
    Slot() : ThreadSlot(ThreadContext::end) {}
};

const Slot& madeAtLoad = Slot::instance();

constexpr std::size_t KEPT_SIZE = std::size_t{64} * 1024;

} // namespace

ThreadContext& ThreadContext::own() {
    ThreadRecord& thread = threadRecord();
    if (thread.context == nullptr) {
        auto made = std::make_unique<ThreadContext>();
        Slot::instance().set(made.get());
        thread.context = made.release();
    }
    return *thread.context;
}

ContextEntry& ThreadContext::add(std::string_view key, const TaggedValue& value) {
    if (spare_.empty()) {
        spare_.emplace_back(*this);
    }
    const std::size_t begin = bytes_.size();
    bytes_.resize(begin + packedPairSize(key, value));
    const char* const end = packPair(bytes_.data() + begin, key, value);
    bytes_.resize(static_cast<std::size_t>(end - bytes_.data()));
    open_.splice(open_.end(), spare_, spare_.begin());
    ContextEntry& entry = open_.back();
    entry.place = std::prev(open_.end());
    entry.size = bytes_.size() - begin;
    entry.isDead.store(false, std::memory_order_relaxed);
    return entry;
}

/// The owner may reuse an entry as soon as it is marked dead, but lives until the reference is released.
void ThreadContext::remove(ContextEntry& entry) noexcept {
    ThreadContext& owner = entry.owner;
    if (&owner == threadRecord().context) {
        owner.removeOwn(entry);
        return;
    }
    entry.isDead.store(true, std::memory_order_release);
    owner.hasDead_.store(true, std::memory_order_release);
    owner.release(1);
}

void ThreadContext::removeOwn(ContextEntry& entry) noexcept {
    std::size_t behind = 0; // usually 0
    for (auto other = std::next(entry.place); other != open_.end(); ++other) {
        behind += other->size;
    }
    char* const end = bytes_.data() + bytes_.size() - behind;
    std::memmove(end - entry.size, end, behind);
    resize(bytes_.size() - entry.size);
    spare_.splice(spare_.begin(), open_, entry.place);
}

/// Compacts the bytes of the remaining pairs.
void ThreadContext::removeDead() noexcept {
    hasDead_.exchange(false, std::memory_order_acquire);
    char* end = bytes_.data();
    const char* pair = end;
    for (auto entry = open_.begin(); entry != open_.end();) {
        const auto next = std::next(entry);
        const std::size_t size = entry->size;
        if (entry->isDead.load(std::memory_order_acquire)) {
            spare_.splice(spare_.begin(), open_, entry);
            references_.fetch_add(1, std::memory_order_relaxed);
        } else {
            std::memmove(end, pair, size);
            end += size;
        }
        pair += size;
        entry = next;
    }
    resize(static_cast<std::size_t>(end - bytes_.data()));
}

/// Releases the memory that an unusually large pair needed.
void ThreadContext::resize(std::size_t size) noexcept {
    bytes_.resize(size);
    if (size == 0 && bytes_.capacity() > KEPT_SIZE) {
        std::vector<char>().swap(bytes_);
    }
}

void ThreadContext::release(std::ptrdiff_t references) noexcept {
    if (references_.fetch_sub(references, std::memory_order_acq_rel) == references) {
        delete this;
    }
}

void ThreadContext::end(void* context) noexcept {
    threadRecord().context = nullptr;
    auto& ended = *static_cast<ThreadContext*>(context);
    ended.release(OWNER - static_cast<std::ptrdiff_t>(ended.open_.size()));
}

} // namespace Log
} // namespace ZAV
