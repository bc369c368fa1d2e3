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

/// A pair of a `LogContext`, in the context of the thread that made it.
struct ContextEntry {
    explicit ContextEntry(ThreadContext& itsOwner) : owner(itsOwner) {}

    ThreadContext& owner;
    std::list<ContextEntry>::iterator place; ///< of this entry; the owner's, as the size is
    std::size_t size = 0;                    ///< of the packed pair
    std::atomic<bool> isDead = false;        ///< another thread has destroyed its object
};

/// The pairs of the `LogContext` objects of a thread, packed and ready for its next message. It is the
/// thread's own, and lives until the thread has ended and all of its pairs are removed.
///
/// An object that another thread destroys leaves its pair here until the owner looks the next time.
class ThreadContext {
public:
    /// Leaves a context to those who have pairs in it.
    /// \param context the calling thread's, which is ending; the thread may still log, and make another one
    static void end(void* context) noexcept;

    /// \return that of the calling thread, made if it has none
    /// \throw std::bad_alloc
    static ThreadContext& own();

    /// Adds a pair; called by the owner.
    /// \return the pair, for `remove`
    /// \throw std::bad_alloc
    ContextEntry& add(std::string_view key, const TaggedValue& value);

    /// Removes a pair, as a rule the last one of the calling thread.
    static void remove(ContextEntry& entry) noexcept;

    /// Called by the owner.
    /// \return the pairs, until the next change; one that a later one hides is still there
    std::string_view packed() noexcept {
        if (hasDead_.load(std::memory_order_relaxed)) {
            removeDead();
        }
        return {bytes_.data(), bytes_.size()};
    }

private:
    static constexpr std::ptrdiff_t OWNER = PTRDIFF_MAX / 2; ///< more than there are pairs

    void removeOwn(ContextEntry& entry) noexcept;
    void removeDead() noexcept;
    void resize(std::size_t size) noexcept;
    void release(std::ptrdiff_t references) noexcept;

    std::vector<char> bytes_;
    std::list<ContextEntry> open_;  ///< in the order of their bytes
    std::list<ContextEntry> spare_; ///< for the pairs to come

    std::atomic<bool> hasDead_ = false; ///< set behind the mark of a pair that another thread has removed
    /// `OWNER` while the thread runs, less the pairs that others have removed and it has not. When it ends,
    /// the number of those that are left takes the place of `OWNER`.
    std::atomic<std::ptrdiff_t> references_ = OWNER;
};

} // namespace Log
} // namespace ZAV
