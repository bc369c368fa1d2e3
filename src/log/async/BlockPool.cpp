#include "log/async/BlockPool.h"

#include <cstring>
#include <iterator>
#include <new>

namespace ZAV {
namespace Log {

BlockPool::~BlockPool() {
    for (const auto& place : kept_) {
        ::operator delete(place.load(std::memory_order_acquire));
    }
}

namespace {

/// \throw std::bad_alloc
MessageBlock* makeBlock(std::size_t capacity) {
    auto* const block = new (::operator new(sizeof(MessageBlock) + capacity)) MessageBlock;
    block->bytes = reinterpret_cast<char*>(block + 1);
    block->capacity = capacity;
    return block;
}

} // namespace

void BlockPool::fill() noexcept {
    try {
        for (std::size_t count = 0; count < std::size(kept_); ++count) {
            MessageBlock* const block = makeBlock(USUAL_CAPACITY);
            std::memset(block->bytes, 0, block->capacity);
            giveBack(block);
        }
    } catch (const std::bad_alloc&) {
        return; // blocks are allocated on demand
    }
}

MessageBlock* BlockPool::take(std::size_t capacity) {
    for (auto& place : kept_) {
        MessageBlock* const kept =
            capacity == USUAL_CAPACITY ? place.exchange(nullptr, std::memory_order_acquire) : nullptr;
        if (kept != nullptr) {
            kept->next.store(nullptr, std::memory_order_relaxed);
            kept->published.store(0, std::memory_order_relaxed);
            return kept;
        }
    }
    return makeBlock(capacity);
}

MessageBlock* BlockPool::takeStored(QueueFile& file, std::size_t wanted, std::size_t least,
                                    QueueFile::Room room) {
    MessageBlock* const block = makeBlock(0);
    const QueueFile::Memory memory = file.take(wanted, least, room);
    if (memory.bytes == nullptr) {
        ::operator delete(block);
        return nullptr;
    }
    block->bytes = memory.bytes;
    block->capacity = memory.size;
    block->word = memory.word;
    block->file = &file;
    return block;
}

void BlockPool::giveBack(MessageBlock* block) noexcept {
    if (block->file != nullptr) {
        block->file->giveBack({block->bytes, block->capacity, block->word});
    }
    for (auto& place : kept_) {
        MessageBlock* empty = nullptr;
        if (block->capacity == USUAL_CAPACITY && block->file == nullptr &&
            place.compare_exchange_strong(empty, block, std::memory_order_release,
                                          std::memory_order_relaxed)) {
            return;
        }
    }
    ::operator delete(block);
}

} // namespace Log
} // namespace ZAV
