#pragma once

#include "log/queuefile/QueueFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

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

/// Allocates blocks, and caches a few that were returned: first touching new memory costs as much as packing
/// the messages into it. Thread-safe; takes no
/// lock, except that of the file for blocks in a file.
class BlockPool {
public:
    static constexpr std::size_t USUAL_CAPACITY = std::size_t{64} * 1024;

    BlockPool() = default;
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// Fills the cache and touches the memory of its blocks, so that logging calls need not.
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

} // namespace Log
} // namespace ZAV
