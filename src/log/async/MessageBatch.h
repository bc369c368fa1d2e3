#pragma once

#include "log/LogMessage.h"

#include <cstddef>
#include <deque>
#include <memory>

namespace ZAV {
namespace Log {

/// Messages in their order, packed one behind another into large blocks. It has no lock.
///
/// A queue of pointers to messages would have one thread allocate what another one frees: the two wait for
/// each other in the allocator, and a backlog that grows by many small pieces costs a call of the system for
/// every few messages.
class MessageBatch {
public:
    /// Gives the messages of a batch, oldest first. The batch must not change meanwhile.
    class Reader {
    public:
        explicit Reader(const MessageBatch& batch) : batch_(batch), offset_(batch.frontOffset_) {}

        bool hasNext() const { return read_ < batch_.size_; }

        /// \return the next message, made anew
        LogMessage next();

    private:
        const MessageBatch& batch_;
        std::size_t read_ = 0;
        std::size_t block_ = 0;
        std::size_t offset_;
    };

    std::size_t size() const { return size_; }

    void append(const LogMessage& message);

    /// Takes the oldest message out; there must be one.
    LogMessage removeFront();

    void swap(MessageBatch& other) noexcept;

private:
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t capacity;
        std::size_t used;
    };

    void addBlock(std::size_t neededBytes);
    static LogMessage unpack(const char* bytes);
    static std::size_t packedSize(const char* bytes);

    std::deque<Block> blocks_;
    std::size_t frontOffset_ = 0; ///< of the oldest message in the first block
    std::size_t size_ = 0;
};

} // namespace Log
} // namespace ZAV
