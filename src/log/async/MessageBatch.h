#pragma once

#include "log/message/MessageFields.h"

#include <cstddef>
#include <list>
#include <memory>

namespace ZAV {
namespace Log {

/// Messages in their order, packed one behind another into large blocks. It has no lock. An empty batch takes
/// no memory, and two batches change places without any.
///
/// A queue of pointers to messages would have one thread allocate what another one frees: the two wait for
/// each other in the allocator, and a backlog that grows by many small pieces costs a call of the system for
/// every few messages.
class MessageBatch {
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t capacity;
        std::size_t used;
    };
    using Blocks = std::list<Block>;

public:
    /// Gives the messages of a batch, oldest first. The batch must not change meanwhile.
    class Reader {
    public:
        explicit Reader(const MessageBatch& batch)
            : batch_(batch), block_(batch.blocks_.begin()), offset_(batch.frontOffset_) {}

        bool hasNext() const { return read_ < batch_.size_; }

        /// \return the next message, whose texts lie in the batch
        MessageFields next();

        /// \return how many reports of failures the message that `next` gave stands at the end of, each of the
        ///         logging calls in answer to the report before
        int answeredReports() const { return answeredReports_; }

    private:
        const MessageBatch& batch_;
        std::size_t read_ = 0;
        Blocks::const_iterator block_;
        std::size_t offset_;
        int answeredReports_ = 0;
    };

    std::size_t size() const { return size_; }

    /// \param answeredReports how many reports of failures the message stands at the end of
    /// \throw std::bad_alloc if there is no room for it; the batch is then as it was
    void append(const MessageFields& message, int answeredReports = 0);

    /// \return the oldest message, whose texts lie in the batch; there must be one
    MessageFields front() const;

    /// Takes the oldest message out; there must be one.
    void removeFront() noexcept;

    void swap(MessageBatch& other) noexcept;

private:
    void addBlock(std::size_t neededBytes);

    Blocks blocks_;
    std::size_t frontOffset_ = 0; ///< of the oldest message in the first block
    std::size_t size_ = 0;
};

} // namespace Log
} // namespace ZAV
