#pragma once

#include "log/TaggedValue.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

/// The pairs of the `LogContext` objects of a thread, packed and ready for its next message. It is the
/// thread's own, and lives until the thread ends.
class ThreadContext {
public:
    /// \return that of the calling thread, made if it has none
    /// \throw std::bad_alloc
    static ThreadContext& own();

    /// Adds a pair.
    /// \param owner by which it is removed
    /// \throw std::bad_alloc
    void add(const void* owner, std::string_view key, const TaggedValue& value);

    /// Removes the pair of an owner, as a rule the last one.
    void remove(const void* owner) noexcept;

    /// \return the pairs, until the next change; one that a later one hides is still there
    std::string_view packed() const noexcept { return {bytes_.data(), bytes_.size()}; }

private:
    struct Entry {
        const void* owner;
        std::size_t size;
    };

    std::vector<char> bytes_;
    std::vector<Entry> entries_;
};

} // namespace Log
} // namespace ZAV
