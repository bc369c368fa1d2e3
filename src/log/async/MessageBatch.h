#pragma once

#include "log/async/Ring.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZAV {
namespace Log {

/// A run of messages that were taken out of the queue, as the rings of their threads keep them, read in the
/// order of their numbers. It has no lock: one thread reads it.
class MessageBatch {
public:
    std::uint64_t size() const noexcept { return last_ - first_ + 1; }

    /// Says that all appenders have got the message that was read last.
    void setGiven() noexcept {
        given_.store(given_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    /// Says that all appenders have got the messages up to that number.
    void setGivenTo(std::uint64_t number) noexcept {
        given_.store(number + 1 - first_, std::memory_order_relaxed);
    }

    /// Begins to read anew.
    void rewind() noexcept;

    bool hasNext() const noexcept { return number_ <= last_; }

    /// \return the number of the next message
    std::uint64_t nextNumber() const noexcept { return number_; }

    /// \return the next message, whose texts lie in the batch
    PackedMessage::Unpacked next() noexcept;

private:
    friend class MessageStore; // which fills it

    /// What is read of one ring.
    struct Stream {
        Ring* ring;
        const MessageBlock* end; ///< the last block
        Ring::Cursor begin;
        Ring::Cursor cursor;
        std::uint64_t nextNumber; ///< of the message behind the cursor; 0 if none was there
    };

    void begin(std::uint64_t first, std::uint64_t last) noexcept;
    void lookForMore() noexcept;
    void copyRestTo(MessageBatch& rest) const;

    std::uint64_t first_ = 1;
    std::uint64_t last_ = 0;
    std::uint64_t number_ = 1; ///< of the next message
    std::vector<Stream> streams_;
    std::size_t stream_ = 0;              ///< that the last message came from
    std::atomic<std::uint64_t> given_{0}; ///< how many messages all appenders have got
};

} // namespace Log
} // namespace ZAV
