#include "log/async/MessageBatch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

namespace ZAV {
namespace Log {

namespace {

/// But for a message that is larger itself.
constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;
constexpr std::size_t PAGE_SIZE = 4096;

/// What a packed message begins with; its text and its file follow.
struct Header {
    Util::TimeUtils::Time time;
    const char* name; ///< of the logger, which is never destroyed
    std::size_t textLength;
    std::uint32_t nameLength;
    std::uint32_t fileLength;
    std::int32_t line;
    std::int16_t level;
    std::uint8_t type;
    std::uint8_t answeredReports;

    std::size_t packedSize() const { return sizeof(Header) + textLength + fileLength; }
};

/// A name beyond four gigabytes is cut.
std::uint32_t lengthOf(std::string_view name) {
    constexpr std::size_t LONGEST = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(name.size(), LONGEST));
}

Header headerOf(const MessageFields& message, int answeredReports) {
    return {message.time,
            message.loggerName.data(),
            message.text.size(),
            lengthOf(message.loggerName),
            lengthOf(message.file),
            message.line,
            static_cast<std::int16_t>(message.level),
            static_cast<std::uint8_t>(message.type),
            static_cast<std::uint8_t>(answeredReports)};
}

/// Packed messages are not aligned.
Header readHeader(const char* bytes) {
    Header header;
    std::memcpy(&header, bytes, sizeof header);
    return header;
}

MessageFields unpack(const char* bytes, const Header& header) {
    const char* const text = bytes + sizeof header;
    const char* const file = text + header.textLength;
    return {{header.name, header.nameLength},
            header.time,
            static_cast<Level::LogLevel>(header.level),
            {text, header.textLength},
            header.line,
            {file, header.fileLength},
            static_cast<MessageType>(header.type)};
}

/// \param text its pointer may be null if it is empty
char* pack(char* bytes, std::string_view text) {
    return bytes + text.copy(bytes, text.size());
}

MessageBlock makeBlock(std::size_t capacity) {
    return {std::unique_ptr<char[]>(new char[capacity]), capacity, 0};
}

} // namespace

void MessageBatch::append(const MessageFields& message, int answeredReports) {
    const Header header = headerOf(message, answeredReports);
    const std::size_t needed = header.packedSize();
    if (blocks_.empty() || blocks_.back().capacity - blocks_.back().used < needed) {
        addBlock(needed);
    }
    MessageBlock& block = blocks_.back();
    char* const bytes = block.bytes.get() + block.used;
    std::memcpy(bytes, &header, sizeof header);
    pack(pack(bytes + sizeof header, message.text), message.file.substr(0, header.fileLength));
    block.used += needed;
    ++size_;
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
    size_ = 0;
    return taken;
}

MessageFields MessageBatch::front() const {
    const char* const bytes = blocks_.front().bytes.get() + frontOffset_;
    return unpack(bytes, readHeader(bytes));
}

void MessageBatch::removeFront() noexcept {
    const MessageBlock& block = blocks_.front();
    frontOffset_ += readHeader(block.bytes.get() + frontOffset_).packedSize();
    --size_;
    if (frontOffset_ == block.used) {
        MessageBlocks emptied;
        emptied.splice(emptied.end(), blocks_, blocks_.begin());
        addSpares(emptied);
        frontOffset_ = 0;
    }
}

void MessageBatch::swap(MessageBatch& other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(frontOffset_, other.frontOffset_);
    std::swap(size_, other.size_);
}

MessageFields MessageBatch::Reader::next() {
    if (offset_ == block_->used) {
        ++block_;
        offset_ = 0;
    }
    const char* const bytes = block_->bytes.get() + offset_;
    const Header header = readHeader(bytes);
    offset_ += header.packedSize();
    ++read_;
    answeredReports_ = header.answeredReports;
    return unpack(bytes, header);
}

} // namespace Log
} // namespace ZAV
