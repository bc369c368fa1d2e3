#pragma once

#include "log/TaggedValue.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

class ThreadContext;

/// A pair of a `LogContext`, in the context of the thread that made it.
struct ContextEntry {
    explicit ContextEntry(ThreadContext& itsOwner) : owner(itsOwner) {}

    ThreadContext& owner;
    std::size_t size = 0;             ///< of the packed pair; the owner's. 0 once it is taken out
    std::atomic<bool> isDead = false; ///< its object was destroyed
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
        if (references_.load(std::memory_order_relaxed) != OWNER) {
            collect();
        }
        return {bytes_.data(), bytes_.size()};
    }

private:
    static constexpr std::ptrdiff_t OWNER = PTRDIFF_MAX / 2; ///< more than there are pairs

    void takeOut(ContextEntry& entry) noexcept;
    void dropTaken() noexcept;
    void collect() noexcept;
    void release(std::ptrdiff_t references) noexcept;

    std::vector<char> bytes_;
    std::deque<ContextEntry> entries_; ///< in the order of their bytes; they stay where they are
    std::ptrdiff_t open_ = 0;          ///< of the pairs, how many are in `bytes_`

    /// `OWNER` while the thread runs, less the pairs that others have removed and it has not taken out. When
    /// it ends, the number of those that are left takes the place of `OWNER`.
    std::atomic<std::ptrdiff_t> references_ = OWNER;
};

} // namespace Log
} // namespace ZAV
