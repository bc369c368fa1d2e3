#pragma once

#include "log/async/BlockPool.h"
#include "log/async/PackedMessage.h"
#include "log/queuefile/QueueFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// The queued messages of one thread, packed one behind another into a chain of blocks.
///
/// The thread appends without a lock; what is published by one store of its is there for the readers. These
/// take messages out at the front, one reader at a time, under the lock of the queue.
class Ring {
public:
    /// \param pool must outlive the ring
    /// \param room what it may take of a file
    /// \throw std::bad_alloc
    explicit Ring(BlockPool& pool, QueueFile::Room room = QueueFile::USUAL_ROOM);
    ~Ring();
    Ring(const Ring&) = delete;
    Ring& operator=(const Ring&) = delete;

    // The side of the thread that appends

    /// \return how many bytes of a block in a file a message takes at most
    static std::size_t storedSize(const MessageFields& message);

    /// Makes room for a message; the `append` that has to follow cannot fail.
    /// \param message lives until then
    /// \param nextNumber a number that the message's own will be at or above
    /// \param file where the message is to be kept, which must never be destroyed; null for memory
    /// \return nothing if the file has no room for it
    /// \throw std::bad_alloc
    std::optional<PackedMessage> reserve(const MessageFields& message, int answeredReports,
                                         std::uint64_t nextNumber, QueueFile* file = nullptr);

    /// Writes the message that room was made for, and publishes it.
    void append(const PackedMessage& message, std::uint64_t number) noexcept;

    // The readers' side

    /// A place between two messages.
    class Cursor {
    public:
        Cursor() = default;
        explicit Cursor(MessageBlock* block, std::uint64_t passed = 0) : block_(block), passed_(passed) {}

        /// Goes on to the block that holds the next message.
        /// \param last the block beyond which the cursor does not go
        /// \return whether there is a message behind the cursor
        bool findNext(const MessageBlock* last) noexcept;

        /// \return the number of the message that `findNext` has found
        std::uint64_t nextNumber() const noexcept;

        /// Passes the message that `findNext` has found.
        PackedMessage::Unpacked next() noexcept;

        /// \return the number of the message that was passed last; 0 if none was
        std::uint64_t passed() const noexcept { return passed_; }

        MessageBlock* block() const noexcept { return block_; }

    private:
        bool isAtMessage() noexcept;

        /// \return what stands before each message
        std::size_t frameSize() const noexcept;

        MessageBlock* block_ = nullptr;
        std::size_t offset_ = 0;
        SharedFields before_; ///< of the message before it in the block
        std::uint64_t passed_ = 0;
    };

    // The lock of the queue guards what these use.

    /// Takes all messages out that have a lower number.
    /// \return whether there is another one, which `front` leads to
    bool findFront(std::uint64_t lowest) noexcept;
    Cursor& front() noexcept { return front_; }

    /// Keeps the memory of what is published now from the front on, until `release`. What is appended later
    /// can be taken out meanwhile, and its memory is freed.
    void keep() noexcept;

    /// \return the block with the end of what is kept; null if nothing is
    const MessageBlock* lastKept() const noexcept { return lastKept_; }

    /// \param read everything before it has been taken out
    void release(const Cursor& read) noexcept;

    /// Gives the last block back, of a ring that holds no message and keeps nothing. No thread must append
    /// meanwhile.
    /// \throw std::bad_alloc
    void giveLastBlockBack();

    /// Says that no thread appends any more.
    void end() noexcept { hasEnded_ = true; }
    bool hasEnded() const noexcept { return hasEnded_; }

private:
    std::optional<PackedMessage> reserveInMemory(const MessageFields& message, int answeredReports,
                                                 std::uint64_t nextNumber);
    std::optional<PackedMessage> reserveStored(const MessageFields& message, int answeredReports,
                                               std::uint64_t nextNumber, QueueFile& file);
    bool hasRoom(std::size_t bytes, const QueueFile& file) const noexcept;
    bool isLoggerNoted(const MessageFields& message) noexcept;
    bool isPlaceNoted(const MessageFields& message) noexcept;
    void note(const std::string& payload) noexcept;
    bool addBlock(std::size_t neededBytes, QueueFile* file);
    void link(MessageBlock* block) noexcept;
    bool passBlock() noexcept;
    void freeToFront() noexcept;

    BlockPool& pool_;
    const QueueFile::Room room_;

    // Used by the thread that appends alone.
    std::size_t used_ = 0; ///< of the last block
    SharedFields last_;    ///< of the newest message in the last block
    const SharedFields none_;
    std::size_t nextCapacity_;
    const void* notedLoggers_[32] = {}; ///< what the last block, in a file, tells of
    const void* notedPlaces_[32] = {};

    std::atomic<MessageBlock*> lastBlock_; ///< written by that thread

    // Used by the readers.
    MessageBlock* oldest_; ///< the first of the chain
    Cursor front_;
    MessageBlock* lastKept_ = nullptr;
    bool isFrontBeyondKept_ = false;
    bool hasEnded_ = false;
};

} // namespace Log
} // namespace ZAV
