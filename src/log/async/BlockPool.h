#pragma once

#include "log/queuefile/QueueFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace ZAV {
namespace Log {

/// Memory for packed messages, behind this head or in a file. The head itself is this process's alone, so
/// that a forked child finds the chain as it was at the fork.
struct MessageBlock {
    char* bytes = nullptr;
    std::atomic<MessageBlock*> next{
        nullptr};                          ///< set once, when the thread that appends has filled this block
    std::atomic<std::size_t> published{0}; ///< bytes that hold messages
    std::size_t capacity = 0;              ///< in bytes
    QueueFile* file = nullptr;             ///< where it lies, as records of their own; null if in memory
    std::uint64_t word = 0;                ///< that it begins with in the file
};

/// Hands out blocks, and keeps a few that were given back: the first touch of new memory costs as much as
/// packing the messages into it. All operations may be called from any thread, and take no lock.
class BlockPool {
public:
    static constexpr std::size_t USUAL_CAPACITY = std::size_t{64} * 1024;

    BlockPool() = default;
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// Makes as many blocks as are kept, and touches their memory, so that the calls that take them need not.
    void fill() noexcept;

    /// \return a block in memory
    /// \throw std::bad_alloc
    MessageBlock* take(std::size_t capacity);

    /// \return a block in a file; null if that is full
    /// \param wanted the capacity that the block should have
    /// \param least the capacity that it must have
    /// \throw std::bad_alloc
    static MessageBlock* takeStored(QueueFile& file, std::size_t wanted, std::size_t least,
                                    QueueFile::Room room);

    void giveBack(MessageBlock* block) noexcept;

private:
    std::atomic<MessageBlock*> kept_[16] = {}; ///< all of the usual capacity
};

} // namespace Log
} // namespace ZAV
