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

/// The queued messages of one thread, packed into a chain of blocks.
///
/// The thread appends without a lock and publishes each message to the readers with one store. Readers take
/// messages out at the front, one reader at a time, under the lock of the queue.
class Ring {
public:
    /// \param pool must outlive the ring
    /// \param room how much of a file it may use
    /// \throw std::bad_alloc
    explicit Ring(BlockPool& pool, QueueFile::Room room = QueueFile::USUAL_ROOM);
    ~Ring();
    Ring(const Ring&) = delete;
    Ring& operator=(const Ring&) = delete;

    // Called by the appending thread

    /// \return upper bound of the bytes that a message takes in a file's block
    static std::size_t storedSize(const MessageFields& message);

    /// Reserves room for a message; the `append` that must follow cannot fail.
    /// \param message must outlive that call
    /// \param nextNumber lower bound of the message's own number
    /// \param file where to keep the message, never destroyed; null for memory
    /// \return empty if the file has no room for it
    /// \throw std::bad_alloc
    std::optional<PackedMessage> reserve(const MessageFields& message, int answeredReports,
                                         std::uint64_t nextNumber, QueueFile* file = nullptr);

    /// Writes the message that `reserve` returned, and publishes it.
    void append(const PackedMessage& message, std::uint64_t number) noexcept;

    // Called by readers

    /// A position between two messages.
    class Cursor {
    public:
        Cursor() = default;
        explicit Cursor(MessageBlock* block, std::uint64_t passed = 0) : block_(block), passed_(passed) {}

        /// Advances to the block that holds the next message.
        /// \param last the block at whose end the cursor stops
        /// \return whether there is a message at the cursor
        bool findNext(const MessageBlock* last) noexcept;

        /// \return the number of the message found by `findNext`
        std::uint64_t nextNumber() const noexcept;

        /// Reads the message found by `findNext` and moves past it.
        PackedMessage::Unpacked next() noexcept;

        /// \return the number of the last message passed; 0 if none was
        std::uint64_t passed() const noexcept { return passed_; }

        MessageBlock* block() const noexcept { return block_; }

    private:
        bool isAtMessage() noexcept;

        /// \return the size of the frame before each message
        std::size_t frameSize() const noexcept;

        MessageBlock* block_ = nullptr;
        std::size_t offset_ = 0;
        SharedFields before_; ///< of the message before the cursor in the block
        std::uint64_t passed_ = 0;
    };

    // These require the lock of the queue.

    /// Takes out all messages with lower numbers.
    /// \return whether there is another message, at which `front` then is
    bool findFront(std::uint64_t lowest) noexcept;
    Cursor& front() noexcept { return front_; }

    /// Keeps the memory of everything published so far, from the front on, until `release`. Messages appended
    /// later can be taken out meanwhile, which frees their memory.
    void keep() noexcept;

    /// \return the last block that is kept; null if none is
    const MessageBlock* lastKept() const noexcept { return lastKept_; }

    /// \param read position up to which everything has been taken out
    void release(const Cursor& read) noexcept;

    /// Returns the last block of a ring that holds no message and keeps nothing. No thread may append
    /// meanwhile.
    /// \throw std::bad_alloc
    void releaseLastBlock();

    /// Marks that no thread appends any more.
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

    // Used only by the appending thread.
    std::size_t used_ = 0; ///< bytes of the last block
    SharedFields last_;    ///< of the newest message in the last block
    const SharedFields none_;
    std::size_t nextCapacity_;
    const void* notedLoggers_[32] = {}; ///< addresses for which the last block, in a file, has notes
    const void* notedPlaces_[32] = {};

    std::atomic<MessageBlock*> lastBlock_; ///< written by the appending thread

    // Used by the readers.
    MessageBlock* oldest_; ///< first block of the chain
    Cursor front_;
    MessageBlock* lastKept_ = nullptr;
    bool isFrontBeyondKept_ = false;
    bool hasEnded_ = false;
};

} // namespace Log
} // namespace ZAV
