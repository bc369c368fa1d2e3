#pragma once

#include "log/TaggedValue.h"

#include <atomic>
#include <cstddef>
#include <list>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

class ThreadContext;

/// A pair of a `LogContext`, in the context of the thread that created it.
struct ContextEntry {
    explicit ContextEntry(ThreadContext& itsOwner) : owner(itsOwner) {}

    ThreadContext& owner;
    std::list<ContextEntry>::iterator place; ///< of this entry; used by the owner only, like `size`
    std::size_t size = 0;                    ///< of the packed pair
    std::atomic<bool> isDead = false;        ///< another thread has destroyed its object
};

/// The pairs of a thread's `LogContext` objects, packed and ready for its next message. It is owned by the
/// thread, and lives until the thread has ended and all its pairs are removed.
///
/// A pair whose object another thread destroys stays here until the owner's next access.
class ThreadContext {
public:
    /// Gives up the thread's ownership: the context lives until its last pair is removed.
    /// \param context of the calling thread, which is ending; the thread may still log, and create a new one
    static void end(void* context) noexcept;

    /// \return the calling thread's context, created if it has none
    /// \throw std::bad_alloc
    static ThreadContext& own();

    /// Adds a pair. Called by the owner only.
    /// \return the pair, for `remove`
    /// \throw std::bad_alloc
    ContextEntry& add(std::string_view key, const TaggedValue& value);

    /// Removes a pair, usually the last one of the calling thread.
    static void remove(ContextEntry& entry) noexcept;

    /// Called by the owner only.
    /// \return the pairs, valid until the next change; includes pairs hidden by later ones
    std::string_view packed() noexcept {
        if (hasDead_.load(std::memory_order_relaxed)) {
            removeDead();
        }
        return {bytes_.data(), bytes_.size()};
    }

private:
    static constexpr std::ptrdiff_t OWNER = PTRDIFF_MAX / 2; ///< exceeds any number of pairs

    void removeOwn(ContextEntry& entry) noexcept;
    void removeDead() noexcept;
    void resize(std::size_t size) noexcept;
    void release(std::ptrdiff_t references) noexcept;

    std::vector<char> bytes_;
    std::list<ContextEntry> open_;  ///< in the order of their bytes
    std::list<ContextEntry> spare_; ///< to be reused

    std::atomic<bool> hasDead_ = false; ///< set after a pair's `isDead`, by the thread that removed it
    /// While the thread runs: `OWNER`, less the pairs that other threads have removed and the owner has not
    /// reclaimed. When it ends, the number of remaining pairs replaces `OWNER`.
    std::atomic<std::ptrdiff_t> references_ = OWNER;
};

} // namespace Log
} // namespace ZAV
