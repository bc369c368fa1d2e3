#include "log/async/MessageBatch.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace ZAV {
namespace Log {

namespace {

constexpr std::size_t SMALLEST_BLOCK = std::size_t{4} * 1024;
constexpr std::size_t LARGEST_BLOCK = std::size_t{64} * 1024; // but for a message that is larger itself

/// What a packed message begins with; the three strings follow it, in the order of their lengths here.
struct Header {
    Util::TimeUtils::Time time;
    Level::LogLevel level;
    MessageType type;
    int line;
    int answeredReports;
    std::size_t nameLength;
    std::size_t textLength;
    std::size_t fileLength;

    std::size_t packedSize() const { return sizeof(Header) + nameLength + textLength + fileLength; }
};

Header headerOf(const MessageFields& message, int answeredReports) {
    return {message.time,        message.level,      message.type,
            message.line,        answeredReports,    message.loggerName.size(),
            message.text.size(), message.file.size()};
}

/// Packed messages are not aligned.
Header readHeader(const char* bytes) {
    Header header;
    std::memcpy(&header, bytes, sizeof header);
    return header;
}

MessageFields unpack(const char* bytes) {
    const Header header = readHeader(bytes);
    const char* const name = bytes + sizeof header;
    const char* const text = name + header.nameLength;
    const char* const file = text + header.textLength;
    return {{name, header.nameLength}, header.time, header.level, {text, header.textLength}, header.line,
            {file, header.fileLength}, header.type};
}

char* pack(char* bytes, const Header& header) {
    std::memcpy(bytes, &header, sizeof header);
    return bytes + sizeof header;
}

/// \param text may be one that leads nowhere, if it is empty
char* pack(char* bytes, std::string_view text) {
    return bytes + text.copy(bytes, text.size());
}

} // namespace

void MessageBatch::append(const MessageFields& message, int answeredReports) {
    const Header header = headerOf(message, answeredReports);
    const std::size_t needed = header.packedSize();
    if (blocks_.empty() || blocks_.back().capacity - blocks_.back().used < needed) {
        addBlock(needed);
    }
    Block& block = blocks_.back();
    char* bytes = pack(block.bytes.get() + block.used, header);
    bytes = pack(bytes, message.loggerName);
    bytes = pack(bytes, message.text);
    pack(bytes, message.file);
    block.used += needed;
    ++size_;
}

/// Blocks grow with the batch, so that a short one takes little memory.
void MessageBatch::addBlock(std::size_t neededBytes) {
    const std::size_t grown = blocks_.empty() ? SMALLEST_BLOCK : 2 * blocks_.back().capacity;
    const std::size_t capacity = std::max(neededBytes, std::min(grown, LARGEST_BLOCK));
    blocks_.push_back({std::unique_ptr<char[]>(new char[capacity]), capacity, 0});
}

MessageFields MessageBatch::front() const {
    return unpack(blocks_.front().bytes.get() + frontOffset_);
}

void MessageBatch::removeFront() noexcept {
    const Block& block = blocks_.front();
    frontOffset_ += readHeader(block.bytes.get() + frontOffset_).packedSize();
    --size_;
    if (frontOffset_ == block.used) {
        blocks_.pop_front();
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
    return unpack(bytes);
}

} // namespace Log
} // namespace ZAV
