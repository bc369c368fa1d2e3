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

/// What a packed message begins with; its text follows, and its file if it has one of its own.
struct Header {
    Util::TimeUtils::Time time;
    const char* name; ///< of the logger, which is never destroyed
    std::size_t textLength;
    std::uint32_t nameLength;
    std::uint32_t fileLength;
    std::int32_t line;
    std::int16_t level;
    std::uint8_t type : 4;
    std::uint8_t hasFile : 4; ///< 0 if the file is that of the message before
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
            static_cast<std::uint8_t>(message.type & 0xF),
            1,
            static_cast<std::uint8_t>(answeredReports)};
}

/// Packed messages are not aligned.
Header readHeader(const char* bytes) {
    Header header;
    std::memcpy(&header, bytes, sizeof header);
    return header;
}

/// \param file that of the message before in the block
/// \return the message's own
std::string_view fileOf(const char* bytes, const Header& header, std::string_view file) {
    return header.hasFile != 0
               ? std::string_view(bytes + sizeof header + header.textLength, header.fileLength)
               : file;
}

MessageFields unpack(const char* bytes, const Header& header, std::string_view file) {
    return {
        {header.name, header.nameLength},           header.time, static_cast<Level::LogLevel>(header.level),
        {bytes + sizeof header, header.textLength}, header.line, file,
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
    Header header = headerOf(message, answeredReports);
    if (hasRoom(sizeof header + message.text.size()) && isLastFile(message.file)) {
        header.hasFile = 0;
        header.fileLength = 0;
    } else if (!hasRoom(header.packedSize())) {
        addBlock(header.packedSize());
    }
    MessageBlock& block = blocks_.back();
    char* const bytes = block.bytes.get() + block.used;
    std::memcpy(bytes, &header, sizeof header);
    pack(pack(bytes + sizeof header, message.text), message.file.substr(0, header.fileLength));
    lastFile_ = fileOf(bytes, header, lastFile_);
    block.used += header.packedSize();
    ++size_;
}

bool MessageBatch::hasRoom(std::size_t neededBytes) const {
    return !blocks_.empty() && blocks_.back().capacity - blocks_.back().used >= neededBytes;
}

/// The first message of a block always has its own, since blocks come and go one by one.
bool MessageBatch::isLastFile(std::string_view file) const {
    return blocks_.back().used > 0 && file == lastFile_;
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
    const Header header = readHeader(bytes);
    return unpack(bytes, header, fileOf(bytes, header, fileBeforeFront_));
}

void MessageBatch::removeFront() noexcept {
    const MessageBlock& block = blocks_.front();
    const char* const bytes = block.bytes.get() + frontOffset_;
    const Header header = readHeader(bytes);
    fileBeforeFront_ = fileOf(bytes, header, fileBeforeFront_);
    frontOffset_ += header.packedSize();
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
    std::swap(fileBeforeFront_, other.fileBeforeFront_);
    std::swap(lastFile_, other.lastFile_);
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
    file_ = fileOf(bytes, header, file_);
    return unpack(bytes, header, file_);
}

} // namespace Log
} // namespace ZAV
