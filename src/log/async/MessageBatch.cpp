#include "log/async/MessageBatch.h"

#include <algorithm>
#include <iterator>

namespace ZAV {
namespace Log {

namespace {

/// But for a message that is larger itself.
constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;
constexpr std::size_t PAGE_SIZE = 4096;

MessageBlock makeBlock(std::size_t capacity) {
    return {std::unique_ptr<char[]>(new char[capacity]), capacity, 0};
}

} // namespace

void MessageBatch::append(const MessageFields& message, int answeredReports) {
    const PackedMessage packed(message, answeredReports, last_);
    if (hasRoom(packed.size())) {
        append(packed);
        return;
    }
    // The first message of a block has nothing in common with the one before, since blocks come and go one by
    // one.
    const PackedMessage first(message, answeredReports, SharedFields());
    addBlock(first.size());
    last_ = SharedFields();
    append(first);
}

void MessageBatch::append(const PackedMessage& packed) noexcept {
    MessageBlock& block = blocks_.back();
    const char* const end = packed.writeTo(block.bytes.get() + block.used, last_);
    block.used = static_cast<std::size_t>(end - block.bytes.get());
    ++size_;
}

bool MessageBatch::hasRoom(std::size_t neededBytes) const {
    return !blocks_.empty() && blocks_.back().capacity - blocks_.back().used >= neededBytes;
}

void MessageBatch::addBlock(std::size_t neededBytes) {
    if (neededBytes > BLOCK_SIZE || spares_.empty()) {
        blocks_.push_back(makeBlock(std::max(neededBytes, BLOCK_SIZE)));
    } else {
        blocks_.splice(blocks_.end(), spares_, spares_.begin());
    }
}

MessageBlocks MessageBatch::makeSpare() {
    MessageBlocks spare;
    spare.push_back(makeBlock(BLOCK_SIZE));
    for (std::size_t offset = 0; offset < BLOCK_SIZE; offset += PAGE_SIZE) {
        spare.front().bytes[offset] = 0;
    }
    return spare;
}

/// The block used last comes first, since it is likely to be in the processor's cache.
void MessageBatch::addSpare(MessageBlocks& blocks, MessageBlocks::iterator block) noexcept {
    block->used = 0;
    spares_.splice(spares_.begin(), blocks, block);
}

void MessageBatch::addSpares(MessageBlocks& blocks) noexcept {
    for (auto block = blocks.begin(); block != blocks.end() && spares_.size() < MOST_SPARES;) {
        const auto next = std::next(block);
        if (block->capacity == BLOCK_SIZE) {
            addSpare(blocks, block);
        }
        block = next;
    }
}

MessageBlocks MessageBatch::takeBlocks() noexcept {
    MessageBlocks taken;
    taken.swap(blocks_);
    frontOffset_ = 0;
    beforeFront_ = SharedFields();
    last_ = SharedFields();
    size_ = 0;
    return taken;
}

MessageFields MessageBatch::front() const {
    return readFront().fields;
}

PackedMessage::Unpacked MessageBatch::readFront() const {
    return PackedMessage::read(blocks_.front().bytes.get() + frontOffset_, beforeFront_);
}

void MessageBatch::removeFront() noexcept {
    const PackedMessage::Unpacked front = readFront();
    beforeFront_ = front.sharedFields();
    frontOffset_ += front.size;
    --size_;
    if (frontOffset_ == blocks_.front().used) {
        MessageBlocks emptied;
        emptied.splice(emptied.end(), blocks_, blocks_.begin());
        addSpares(emptied);
        frontOffset_ = 0;
        beforeFront_ = SharedFields();
    }
    if (blocks_.empty()) {
        last_ = SharedFields();
    }
}

void MessageBatch::swap(MessageBatch& other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(frontOffset_, other.frontOffset_);
    std::swap(beforeFront_, other.beforeFront_);
    std::swap(last_, other.last_);
    std::swap(size_, other.size_);
}

MessageFields MessageBatch::Reader::next() {
    if (offset_ == block_->used) {
        ++block_;
        offset_ = 0;
        before_ = SharedFields();
    }
    const PackedMessage::Unpacked message = PackedMessage::read(block_->bytes.get() + offset_, before_);
    before_ = message.sharedFields();
    offset_ += message.size;
    ++read_;
    answeredReports_ = message.answeredReports;
    return message.fields;
}

} // namespace Log
} // namespace ZAV
