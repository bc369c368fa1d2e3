#include "log/async/PackedMessage.h"

#include <cstring>

namespace ZAV {
namespace Log {

namespace {

/// They follow the header in this order; the text comes last.
enum OwnPart : unsigned { OWN_TIME = 1, OWN_LOGGER_NAME = 2, OWN_FILE = 4 };

unsigned findOwnParts(const MessageFields& message, const SharedFields& before) {
    return (message.time == before.time ? 0U : OWN_TIME) |
           (isSamePlace(message.loggerName, before.loggerName) ? 0U : OWN_LOGGER_NAME) |
           (message.file == before.file ? 0U : OWN_FILE);
}

// Packed messages are not aligned.

template <typename Value>
char* write(char* place, const Value& value) {
    std::memcpy(place, &value, sizeof value);
    return place + sizeof value;
}

/// \param text its pointer may be null if it is empty
char* writeText(char* place, std::string_view text) {
    return place + text.copy(place, text.size());
}

template <typename Value>
Value readNext(const char*& bytes) {
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    bytes += sizeof value;
    return value;
}

std::string_view readText(const char*& bytes, std::size_t length) {
    const std::string_view text(bytes, length);
    bytes += length;
    return text;
}

} // namespace

PackedMessage::PackedMessage(const MessageFields& message, int answeredReports,
                             const SharedFields& before) noexcept
    : message_(message), header_{message.text.size(),
                                 message.line,
                                 static_cast<std::int16_t>(message.level),
                                 static_cast<std::uint8_t>(message.type & 0xF),
                                 static_cast<std::uint8_t>(findOwnParts(message, before) & 0xF),
                                 static_cast<std::uint8_t>(answeredReports)} {}

std::size_t PackedMessage::size() const noexcept {
    const unsigned parts = header_.ownParts;
    return sizeof header_ + ((parts & OWN_TIME) != 0 ? sizeof(Util::TimeUtils::Time) : 0) +
           ((parts & OWN_LOGGER_NAME) != 0 ? sizeof(std::string_view) : 0) +
           ((parts & OWN_FILE) != 0 ? sizeof(std::size_t) + message_.file.size() : 0) + message_.text.size();
}

const char* PackedMessage::writeTo(char* place, SharedFields& before) const noexcept {
    const unsigned parts = header_.ownParts;
    char* next = write(place, header_);
    if ((parts & OWN_TIME) != 0) {
        next = write(next, message_.time);
        before.time = message_.time;
    }
    if ((parts & OWN_LOGGER_NAME) != 0) {
        next = write(next, message_.loggerName);
        before.loggerName = message_.loggerName;
    }
    if ((parts & OWN_FILE) != 0) {
        next = write(next, message_.file.size());
        before.file = std::string_view(next, message_.file.size());
        next = writeText(next, message_.file);
    }
    return writeText(next, message_.text);
}

PackedMessage::Unpacked PackedMessage::read(const char* bytes, const SharedFields& before) noexcept {
    const char* next = bytes;
    const auto header = readNext<Header>(next);
    SharedFields shared(before);
    if ((header.ownParts & OWN_TIME) != 0) {
        shared.time = readNext<Util::TimeUtils::Time>(next);
    }
    if ((header.ownParts & OWN_LOGGER_NAME) != 0) {
        shared.loggerName = readNext<std::string_view>(next);
    }
    if ((header.ownParts & OWN_FILE) != 0) {
        shared.file = readText(next, readNext<std::size_t>(next));
    }
    const std::string_view text = readText(next, header.textLength);
    return {{shared.loggerName, shared.time, static_cast<Level::LogLevel>(header.level), text, header.line,
             shared.file, static_cast<MessageType>(header.type)},
            header.answeredReports,
            static_cast<std::size_t>(next - bytes)};
}

} // namespace Log
} // namespace ZAV
