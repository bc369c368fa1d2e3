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
    Util::TimeUtils::Time time;
    std::string_view loggerName; ///< the logger's own string, so that its address identifies the logger
    std::string_view file;
};

/// A message in the form in which it lies behind another one: without what the two have in common, since the
/// memory that a message takes costs more than the comparison.
class PackedMessage {
public:
    /// \param message lives as long as this object
    /// \param answeredReports the length of the chain of failure reports that led to the message
    /// \param before of the message before it
    PackedMessage(const MessageFields& message, int answeredReports, const SharedFields& before) noexcept;

    /// \return how many bytes the message takes
    std::size_t size() const noexcept;

    /// Writes the message with its texts, but for the logger's name, which must stay where it is.
    /// \param place has room for `size` bytes
    /// \param before the fields that the constructor was given; they become those of this message, and a file
    ///        that it does not share is then the one in the place
    /// \return the end of what was written
    const char* writeTo(char* place, SharedFields& before) const noexcept;

    /// What `read` gives.
    struct Unpacked {
        MessageFields fields; ///< whose texts lie where they were written
        int answeredReports;
        std::size_t size; ///< of the packed message, in bytes

        SharedFields sharedFields() const noexcept { return {fields.time, fields.loggerName, fields.file}; }
    };

    /// Reads what `writeTo` has written.
    /// \param before of the message before it
    static Unpacked read(const char* bytes, const SharedFields& before) noexcept;

private:
    /// What every packed message begins with.
    struct Header {
        std::uint64_t textLength;
        std::int32_t line;
        std::int16_t level;
        std::uint8_t type : 4;
        std::uint8_t ownParts : 4; ///< which it does not share with the message before, see `OwnPart`
        std::uint8_t answeredReports;
    };

    const MessageFields& message_;
    Header header_;
};

} // namespace Log
} // namespace ZAV
