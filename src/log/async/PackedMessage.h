#pragma once

#include "log/message/MessageFields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ZAV {
namespace Log {

/// Fields that a message often shares with the one before it. The first message of a block is encoded
/// relative to a default one.
struct SharedFields {
    std::uint64_t number = 0; ///< position in the queue's order
    Util::TimeUtils::Time time;
    std::string_view loggerName; ///< the logger's own string: its address identifies the logger
    const Logger* logger = nullptr;
    std::string_view file;
    const KnownPlace* place = nullptr;
    std::string_view context; ///< pairs of the logging thread, packed
    std::uint64_t thread = 0;
};

/// A message encoded relative to the one before it in its block. Shared fields are omitted: the memory that
/// they would take costs more than the comparison.
class PackedMessage {
public:
    /// \param message must outlive this object
    /// \param answeredReports the length of the chain of failure reports that led to the message
    /// \param before fields of the message before it
    /// \param nextNumber lower bound of the message's own number
    PackedMessage(const MessageFields& message, int answeredReports, const SharedFields& before,
                  std::uint64_t nextNumber) noexcept;

    /// \return upper bound of the encoded size in bytes
    std::size_t mostBytes() const noexcept { return mostBytes_; }

    /// Encodes the message with its texts. The logger's name is stored by address only, so it must not move.
    /// \param place where to write; must have room for `mostBytes`
    /// \param number of the message
    /// \param before the fields that the constructor was given; replaced with those of this message, whose
    ///        own file and context then refer to the encoded bytes
    /// \return the end of the encoded message
    char* writeTo(char* place, std::uint64_t number, SharedFields& before) const noexcept;

    /// Result of `read`.
    struct Unpacked {
        MessageFields fields; ///< views into the encoded bytes
        std::uint64_t number;
        int answeredReports;
        std::size_t size; ///< of the encoded message, in bytes

        SharedFields sharedFields() const noexcept {
            return {number,      fields.time,  fields.loggerName, fields.logger,
                    fields.file, fields.place, fields.context,    fields.thread};
        }
    };

    /// Decodes what `writeTo` has written.
    /// \param before fields of the message before it
    static Unpacked read(const char* bytes, const SharedFields& before) noexcept;

    /// Reads only the number.
    static std::uint64_t readNumber(const char* bytes, const SharedFields& before) noexcept;

private:
    friend class StoredMessage;

    /// Header of every packed message.
    struct Header {
        std::uint32_t textLength;
        std::uint32_t numberStep; ///< added to the number of the message before
        std::int32_t line;
        std::uint8_t level;
        std::uint8_t answeredReports;
        std::uint16_t parts; ///< `OwnPart` bits of what follows; then type and form
    };

    template <typename Bytes>
    static Unpacked readParts(Bytes& bytes, const SharedFields& before) noexcept;

    bool has(unsigned part) const noexcept { return (ownParts_ & part) != 0; }
    Header header(std::uint64_t numberBefore, std::uint64_t number) const noexcept;
    std::size_t measure() const noexcept;
    std::size_t measureRareParts() const noexcept;
    char* writeRareParts(char* next, SharedFields& before) const noexcept;

    const MessageFields& message_;
    const int answeredReports_;
    const unsigned ownParts_;
    const std::size_t mostBytes_;
};

/// A message packed as the first of its block, possibly by another process, in untrusted bytes. Addresses in
/// it are never dereferenced.
class StoredMessage {
public:
    /// \param packed must outlive the result
    /// \return empty if the bytes are not a valid message
    static std::optional<StoredMessage> read(std::string_view packed) noexcept;

    std::uint64_t number() const noexcept { return unpacked_.number; }

    /// \return address of the logger's name; 0 if it has none
    std::uint64_t loggerAddress() const noexcept {
        return reinterpret_cast<std::uintptr_t>(unpacked_.fields.loggerName.data());
    }
    /// \return address of the place; 0 if it has none
    std::uint64_t placeAddress() const noexcept {
        return reinterpret_cast<std::uintptr_t>(unpacked_.fields.place);
    }

    /// \param loggerName the name for `loggerAddress`; must outlive the result
    /// \param place the same for `placeAddress`; null if there was none or it is unknown
    MessageFields fields(std::string_view loggerName, const KnownPlace* place) const noexcept;

private:
    explicit StoredMessage(const PackedMessage::Unpacked& unpacked) noexcept : unpacked_(unpacked) {}

    PackedMessage::Unpacked unpacked_;
};

} // namespace Log
} // namespace ZAV
