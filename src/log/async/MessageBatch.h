#pragma once

#include "log/async/PackedMessage.h"
#include "log/message/MessageFields.h"

#include <cstddef>
#include <list>
#include <memory>

namespace ZAV {
namespace Log {

/// Memory for packed messages.
struct MessageBlock {
    std::unique_ptr<char[]> bytes;
    std::size_t capacity;
    std::size_t used;
};
using MessageBlocks = std::list<MessageBlock>;

/// Messages in their order, packed one behind another into large blocks. It has no lock.
///
/// A queue of pointers to messages would have one thread allocate what another one frees: the two wait for
/// each other in the allocator, and a backlog that grows by many small pieces costs a call of the system for
/// every few messages.
///
/// The first touch of new memory costs as much as packing the messages into it. So a batch keeps a few spare
/// blocks: those that it used before, and those that another thread touched in advance.
class MessageBatch {
public:
    /// Gives the messages of a batch, oldest first. The batch must not change meanwhile.
    class Reader {
    public:
        explicit Reader(const MessageBatch& batch)
            : batch_(batch), block_(batch.blocks_.begin()), offset_(batch.frontOffset_),
              before_(batch.beforeFront_) {}

        bool hasNext() const { return read_ < batch_.size_; }

        /// \return the next message, whose texts lie in the batch
        MessageFields next();

        /// \return the length of the chain of failure reports, each logged in answer to the one before, that
        ///         led to the message that `next` gave; 0 if it answers none
        int answeredReports() const { return answeredReports_; }

    private:
        const MessageBatch& batch_;
        std::size_t read_ = 0;
        MessageBlocks::const_iterator block_;
        std::size_t offset_;
        SharedFields before_; ///< of the message that was read last
        int answeredReports_ = 0;
    };

    std::size_t size() const { return size_; }

    /// \param message its texts are copied, but for the logger's name, which must stay where it is
    /// \param answeredReports the length of the chain of failure reports that led to this message
    /// \throw std::bad_alloc if there is no room for it; the batch is then as it was
    void append(const MessageFields& message, int answeredReports = 0);

    /// \return the oldest message, whose texts lie in the batch; there must be one
    MessageFields front() const;

    /// Takes the oldest message out; there must be one.
    void removeFront() noexcept;

    /// Exchanges the messages. The spare blocks stay where they are.
    void swap(MessageBatch& other) noexcept;

    // Spare blocks

    /// \return true if a spare block should be made
    bool wantsSpare() const { return spares_.size() < READY_SPARES; }

    /// \return a block whose memory was touched
    /// \throw std::bad_alloc
    static MessageBlocks makeSpare();

    /// Takes blocks over, as far as spare ones are of use; the others are left.
    void addSpares(MessageBlocks& blocks) noexcept;

    /// Takes the memory of all messages out, and the messages with it.
    MessageBlocks takeBlocks() noexcept;

private:
    static constexpr std::size_t READY_SPARES = 4; ///< that are made before they are needed
    static constexpr std::size_t MOST_SPARES = 16;

    bool hasRoom(std::size_t neededBytes) const;
    void append(const PackedMessage& packed) noexcept;
    PackedMessage::Unpacked readFront() const;
    void addBlock(std::size_t neededBytes);
    void addSpare(MessageBlocks& blocks, MessageBlocks::iterator block) noexcept;

    MessageBlocks blocks_;
    std::size_t frontOffset_ = 0; ///< of the oldest message in the first block
    SharedFields beforeFront_;    ///< of the message before that in the block
    SharedFields last_;           ///< of the newest message in the last block
    std::size_t size_ = 0;
    MessageBlocks spares_; ///< all of the usual size
};

} // namespace Log
} // namespace ZAV
