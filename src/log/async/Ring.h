#pragma once

#include "log/async/PackedMessage.h"
#include "log/queuefile/QueueFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// Memory for packed messages, directly after this header or in a file. The header itself is private to the
/// process, so that a forked child finds the chain as it was at the fork.
struct MessageBlock {
    char* bytes = nullptr;
    std::atomic<MessageBlock*> next{
        nullptr}; ///< set once, by the appending thread when it has filled this block
    std::atomic<std::size_t> published{0}; ///< bytes that readers may read
    std::size_t capacity = 0;              ///< in bytes
    QueueFile* file = nullptr; ///< the file that holds it, with each message a record; null if in memory
    std::uint64_t word = 0;    ///< first word of the block in the file
};

/// Allocates blocks, and caches a few that were returned or that the consumer has touched: first touching new
/// memory costs as much as packing the messages into it. Thread-safe; takes no lock, except that of the file
/// for blocks in a file.
class BlockPool {
public:
    static constexpr std::size_t USUAL_CAPACITY = std::size_t{64} * 1024;

    BlockPool() = default;
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// Fills up the cache if it is less than half full; otherwise returned blocks suffice. Touches the memory
    /// of the new blocks, so that logging calls need not.
    void fill() noexcept;

    /// \return a block in memory
    /// \throw std::bad_alloc
    MessageBlock* take(std::size_t capacity);

    /// \return a block in a file; null if the file is full
    /// \param wanted the preferred capacity
    /// \param least the minimum capacity
    /// \throw std::bad_alloc
    static MessageBlock* takeStored(QueueFile& file, std::size_t wanted, std::size_t least,
                                    QueueFile::Room room);

    void giveBack(MessageBlock* block) noexcept;

private:
    std::atomic<MessageBlock*> kept_[16] = {}; ///< all of the usual capacity
};

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

    BlockPool& pool() const noexcept { return pool_; }

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

/// A contiguous run of messages taken out of the queue, kept by the rings of their threads and read in the
/// order of their numbers. Has no lock: one thread reads it.
class MessageBatch {
public:
    std::uint64_t size() const noexcept { return last_ - first_ + 1; }

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

    /// Allocates memory for threads that log meanwhile, if their queue is in memory and little is left. Cheap
    /// enough to be called after each message.
    void prepareMemory() const noexcept;

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
