#pragma once

#include "log/message/MessageFields.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZAV {
namespace Log {

/// What a message often has in common with the one before it. A default one stands before the first message
/// of a block.
struct SharedFields {
    std::uint64_t number = 0; ///< the message's place in the order of the queue
    Util::TimeUtils::Time time;
    std::string_view loggerName; ///< the logger's own string, so that its address identifies the logger
    const Logger* logger = nullptr;
    std::string_view file;
    const KnownPlace* place = nullptr;
    std::string_view context; ///< of the logging thread, packed
    std::uint64_t thread = 0;
};

/// A message encoded relative to the one before it in its block: what the two share is left out, since the
/// memory that a message takes costs more than the comparison.
class PackedMessage {
public:
    /// \param message lives as long as this object
    /// \param answeredReports the length of the chain of failure reports that led to the message
    /// \param before of the message before it
    /// \param nextNumber a number that the message's own will be at or above
    PackedMessage(const MessageFields& message, int answeredReports, const SharedFields& before,
                  std::uint64_t nextNumber) noexcept;

    /// \return how many bytes the message takes at most
    std::size_t mostBytes() const noexcept { return mostBytes_; }

    /// Writes the message with its texts, but for the logger's name, which must stay where it is.
    /// \param place has room for `mostBytes`
    /// \param number of the message
    /// \param before the fields that the constructor was given; they become those of this message, and a file
    ///        or a context that it does not share is then the one in the place
    /// \return the end of the message
    char* writeTo(char* place, std::uint64_t number, SharedFields& before) const noexcept;

    /// What `read` gives.
    struct Unpacked {
        MessageFields fields; ///< whose texts lie where they were written
        std::uint64_t number;
        int answeredReports;
        std::size_t size; ///< of the packed message, in bytes

        SharedFields sharedFields() const noexcept {
            return {number,      fields.time,  fields.loggerName, fields.logger,
                    fields.file, fields.place, fields.context,    fields.thread};
        }
    };

    /// Reads what `writeTo` has written.
    /// \param before of the message before it
    static Unpacked read(const char* bytes, const SharedFields& before) noexcept;

    /// Reads the number alone.
    static std::uint64_t readNumber(const char* bytes, const SharedFields& before) noexcept;

private:
    friend class StoredMessage;

    /// What every packed message begins with.
    struct Header {
        std::uint32_t textLength;
        std::uint32_t numberStep; ///< from the number of the message before
        std::int32_t line;
        std::uint8_t level;
        std::uint8_t answeredReports;
        std::uint16_t
            parts; ///< which it does not share with the message before, see `OwnPart`; its type and form
    };

    template <typename Bytes>
    static Unpacked readParts(Bytes& bytes, const SharedFields& before) noexcept;

    bool has(unsigned part) const noexcept { return (ownParts_ & part) != 0; }
    Header header(std::uint64_t numberBefore, std::uint64_t number) const noexcept;
    std::size_t measure() const noexcept;
    std::size_t measureSeldom() const noexcept;
    char* writeSeldom(char* next, SharedFields& before) const noexcept;

    const MessageFields& message_;
    const int answeredReports_;
    const unsigned ownParts_;
    const std::size_t mostBytes_;
};

/// A message that was packed without one before it, by another process perhaps, in bytes that may have been
/// changed since. The addresses in it are but numbers.
class StoredMessage {
public:
    /// \param packed must outlive the object
    explicit StoredMessage(std::string_view packed) noexcept;

    /// \return false if the bytes are no message; nothing else may be asked then
    bool isWhole() const noexcept { return isWhole_; }

    std::uint64_t number() const noexcept { return unpacked_.number; }

    /// \return of the logger's name; 0 if it has none
    std::uint64_t loggerAddress() const noexcept {
        return reinterpret_cast<std::uintptr_t>(unpacked_.fields.loggerName.data());
    }
    /// \return 0 if it has no place
    std::uint64_t placeAddress() const noexcept {
        return reinterpret_cast<std::uintptr_t>(unpacked_.fields.place);
    }

    /// \param loggerName what was at that address; must outlive what is returned
    /// \param place the same; null if there was none, or it is not known any more
    MessageFields fields(std::string_view loggerName, const KnownPlace* place) const noexcept;

private:
    static PackedMessage::Unpacked unpack(std::string_view packed, bool& isWhole) noexcept;

    bool isWhole_ = false;
    PackedMessage::Unpacked unpacked_;
};

} // namespace Log
} // namespace ZAV
