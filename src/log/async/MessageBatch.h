#pragma once

#include "log/async/Ring.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZAV {
namespace Log {

/// A contiguous run of messages taken out of the queue, kept by the rings of their threads and read in the
/// order of their numbers. Has no lock: one thread reads it.
class MessageBatch {
public:
    std::uint64_t size() const noexcept { return last_ - first_ + 1; }

    /// Marks the message read last as delivered to all appenders.
    void setGiven() noexcept {
        given_.store(given_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    /// Marks the messages up to a number as delivered to all appenders.
    void setGivenTo(std::uint64_t number) noexcept {
        given_.store(number + 1 - first_, std::memory_order_relaxed);
    }

    /// Restarts reading from the first message.
    void rewind() noexcept;

    bool hasNext() const noexcept { return number_ <= last_; }

    /// \return the number of the next message
    std::uint64_t nextNumber() const noexcept { return number_; }

    /// \return the next message; its texts are views into the batch
    PackedMessage::Unpacked next() noexcept;

private:
    friend class MessageStore; // fills it

    /// The part of the batch in one ring.
    struct Stream {
        Ring* ring;
        const MessageBlock* end; ///< the last block
        Ring::Cursor begin;
        Ring::Cursor cursor;
        std::uint64_t nextNumber; ///< of the message at the cursor; 0 if none was found
    };

    void begin(std::uint64_t first, std::uint64_t last) noexcept;
    void lookForMore() noexcept;
    void copyRestTo(MessageBatch& rest) const;

    std::uint64_t first_ = 1;
    std::uint64_t last_ = 0;
    std::uint64_t number_ = 1; ///< of the next message
    std::vector<Stream> streams_;
    std::size_t stream_ = 0;              ///< index of the one that the last message came from
    std::atomic<std::uint64_t> given_{0}; ///< number of messages delivered to all appenders
};

} // namespace Log
} // namespace ZAV
