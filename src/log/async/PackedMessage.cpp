#include "log/async/PackedMessage.h"

#include "log/text/PackedPairs.h"

#include <cstring>
#include <limits>

namespace ZAV {
namespace Log {

namespace {

/// Parts that follow the header in this order, before the text. A message from a known place has no file of
/// its own.
enum OwnPart : unsigned {
    OWN_NUMBER = 1,
    OWN_LENGTH = 2,
    OWN_TIME = 4,
    OWN_LOGGER_NAME = 8,
    OWN_PLACE = 16,
    OWN_FILE = 32,
    OWN_THREAD = 64,
    OWN_CONTEXT = 128,
    OWN_VALUES = 256 // never shared between messages
};
constexpr unsigned OWN_PART_BITS = 9;

/// Parts that most messages do not contain.
constexpr unsigned RARE_PARTS = OWN_NUMBER | OWN_LENGTH | OWN_FILE | OWN_THREAD | OWN_CONTEXT | OWN_VALUES;

struct PackedLogger {
    std::string_view name;
    const Logger* logger;
};

struct PackedPlace {
    const KnownPlace* place;
};

constexpr std::uint64_t LARGEST_STEP = std::numeric_limits<std::uint32_t>::max();

/// The file is written again after a message with a place, since readers then hold that place's file.
unsigned findOwnPlace(const MessageFields& message, const SharedFields& before) {
    if (message.place != before.place) {
        return message.place != nullptr ? OWN_PLACE : OWN_PLACE | OWN_FILE;
    }
    return message.place != nullptr || message.file == before.file ? 0U : OWN_FILE;
}

unsigned findOwnParts(const MessageFields& message, const SharedFields& before, std::uint64_t nextNumber) {
    // The number is not known yet; it is assumed to end up less than half the range above `nextNumber`.
    const bool needsNumber = nextNumber - before.number > LARGEST_STEP / 2;
    return (needsNumber ? OWN_NUMBER : 0U) | (message.text.size() > LARGEST_STEP ? OWN_LENGTH : 0U) |
           (message.time == before.time ? 0U : OWN_TIME) |
           (refersToSameMemory(message.loggerName, before.loggerName) ? 0U : OWN_LOGGER_NAME) |
           (message.thread == before.thread ? 0U : OWN_THREAD) |
           (equalTexts(message.context, before.context) ? 0U : OWN_CONTEXT) |
           (message.values.empty() ? 0U : OWN_VALUES) | findOwnPlace(message, before);
}

// Packed messages are not aligned.

template <typename Value>
char* write(char* place, const Value& value) {
    std::memcpy(place, &value, sizeof value);
    return place + sizeof value;
}

/// \param text may have a null pointer if empty
char* writeText(char* place, std::string_view text) {
    return place + text.copy(place, text.size());
}

/// \return the end of the text, which is written after its size
char* writeSizedText(char* place, std::string_view text) {
    return writeText(write(place, text.size()), text);
}

std::size_t sizeWithText(std::string_view text) {
    return sizeof(std::size_t) + text.size();
}

/// Reads messages packed by this process.
struct TrustedBytes {
    template <typename Value>
    Value read() {
        Value value;
        std::memcpy(&value, next, sizeof value);
        next += sizeof value;
        return value;
    }

    std::string_view text(std::size_t length) {
        const std::string_view text(next, length);
        next += length;
        return text;
    }

    std::string_view sizedText() { return text(read<std::size_t>()); }

    static std::string_view fileOf(const KnownPlace* place) {
        return place == nullptr ? std::string_view() : place->file;
    }

    const char* next;
};

/// Reads arbitrary bytes: missing ones read as 0, and addresses are not dereferenced.
struct UntrustedBytes {
    template <typename Value>
    Value read() {
        Value value{};
        text(sizeof value).copy(reinterpret_cast<char*>(&value), sizeof value);
        return value;
    }

    std::string_view text(std::size_t length) {
        isWhole = isWhole && length <= rest.size();
        const std::string_view text = rest.substr(0, isWhole ? length : 0);
        rest.remove_prefix(text.size());
        return text;
    }

    std::string_view sizedText() { return text(read<std::size_t>()); }

    static std::string_view fileOf(const KnownPlace*) { return std::string_view(); }

    std::string_view rest;
    bool isWhole = true;
};

bool isLevel(Level::LogLevel level) {
    return level >= 0 && level <= Level::AUDIT && level % 10 == 0;
}

/// \return the values
template <typename Bytes>
std::string_view readRareParts(Bytes& bytes, unsigned ownParts, SharedFields& shared) {
    if ((ownParts & OWN_FILE) != 0) {
        shared.file = bytes.sizedText();
    }
    if ((ownParts & OWN_THREAD) != 0) {
        shared.thread = bytes.template read<std::uint64_t>();
    }
    if ((ownParts & OWN_CONTEXT) != 0) {
        shared.context = bytes.sizedText();
    }
    return (ownParts & OWN_VALUES) != 0 ? bytes.sizedText() : std::string_view();
}

} // namespace

PackedMessage::PackedMessage(const MessageFields& message, int answeredReports, const SharedFields& before,
                             std::uint64_t nextNumber) noexcept
    : message_(message), answeredReports_(answeredReports),
      ownParts_(findOwnParts(message, before, nextNumber)), mostBytes_(measure()) {}

PackedMessage::Header PackedMessage::header(std::uint64_t numberBefore, std::uint64_t number) const noexcept {
    const unsigned kind = static_cast<unsigned>(message_.type) | static_cast<unsigned>(message_.form) << 2U;
    return {static_cast<std::uint32_t>(message_.text.size()),
            static_cast<std::uint32_t>(number - numberBefore),
            message_.line,
            static_cast<std::uint8_t>(message_.level),
            static_cast<std::uint8_t>(answeredReports_),
            static_cast<std::uint16_t>(ownParts_ | kind << OWN_PART_BITS)};
}

/// Counts the common parts without checking whether this message has them.
std::size_t PackedMessage::measure() const noexcept {
    return sizeof(Header) + sizeof(Util::TimeUtils::Time) + sizeof(PackedLogger) + sizeof(PackedPlace) +
           (has(RARE_PARTS) ? measureRareParts() : 0) + message_.text.size();
}

std::size_t PackedMessage::measureRareParts() const noexcept {
    return (has(OWN_NUMBER) ? sizeof(std::uint64_t) : 0) + (has(OWN_LENGTH) ? sizeof(std::size_t) : 0) +
           (has(OWN_FILE) ? sizeWithText(message_.file) : 0) + (has(OWN_THREAD) ? sizeof(std::uint64_t) : 0) +
           (has(OWN_CONTEXT) ? sizeWithText(message_.context) : 0) +
           (has(OWN_VALUES) ? sizeWithText(message_.values) : 0);
}

char* PackedMessage::writeTo(char* place, std::uint64_t number, SharedFields& before) const noexcept {
    char* next = write(place, header(before.number, number));
    before.number = number;
    if (has(OWN_NUMBER)) {
        next = write(next, number);
    }
    if (has(OWN_LENGTH)) {
        next = write(next, message_.text.size());
    }
    if (has(OWN_TIME)) {
        next = write(next, message_.time);
        before.time = message_.time;
    }
    if (has(OWN_LOGGER_NAME)) {
        next = write(next, PackedLogger{message_.loggerName, message_.logger});
        before.loggerName = message_.loggerName;
        before.logger = message_.logger;
    }
    if (has(OWN_PLACE)) {
        next = write(next, PackedPlace{message_.place});
        before.place = message_.place;
        before.file = message_.file; // the place's file
    }
    if (has(RARE_PARTS)) {
        next = writeRareParts(next, before);
    }
    return writeText(next, message_.text);
}

char* PackedMessage::writeRareParts(char* next, SharedFields& before) const noexcept {
    if (has(OWN_FILE)) {
        next = writeSizedText(next, message_.file);
        before.file = std::string_view(next - message_.file.size(), message_.file.size());
    }
    if (has(OWN_THREAD)) {
        next = write(next, message_.thread);
        before.thread = message_.thread;
    }
    if (has(OWN_CONTEXT)) {
        next = writeSizedText(next, message_.context);
        before.context = std::string_view(next - message_.context.size(), message_.context.size());
    }
    return has(OWN_VALUES) ? writeSizedText(next, message_.values) : next;
}

std::uint64_t PackedMessage::readNumber(const char* bytes, const SharedFields& before) noexcept {
    TrustedBytes trusted{bytes};
    const auto header = trusted.read<Header>();
    return (header.parts & OWN_NUMBER) != 0 ? trusted.read<std::uint64_t>()
                                            : before.number + header.numberStep;
}

PackedMessage::Unpacked PackedMessage::read(const char* bytes, const SharedFields& before) noexcept {
    TrustedBytes trusted{bytes};
    Unpacked message = readParts(trusted, before);
    message.size = static_cast<std::size_t>(trusted.next - bytes);
    return message;
}

/// \param bytes advanced to the end of the message
template <typename Bytes>
PackedMessage::Unpacked PackedMessage::readParts(Bytes& bytes, const SharedFields& before) noexcept {
    const auto header = bytes.template read<Header>();
    SharedFields shared(before);
    shared.number = (header.parts & OWN_NUMBER) != 0 ? bytes.template read<std::uint64_t>()
                                                     : before.number + header.numberStep;
    const std::size_t textLength =
        (header.parts & OWN_LENGTH) != 0 ? bytes.template read<std::size_t>() : header.textLength;
    if ((header.parts & OWN_TIME) != 0) {
        shared.time = bytes.template read<Util::TimeUtils::Time>();
    }
    if ((header.parts & OWN_LOGGER_NAME) != 0) {
        const auto logger = bytes.template read<PackedLogger>();
        shared.loggerName = logger.name;
        shared.logger = logger.logger;
    }
    if ((header.parts & OWN_PLACE) != 0) {
        shared.place = bytes.template read<PackedPlace>().place;
        shared.file = Bytes::fileOf(shared.place);
    }
    const std::string_view values =
        (header.parts & RARE_PARTS) != 0 ? readRareParts(bytes, header.parts, shared) : std::string_view();
    const std::string_view text = bytes.text(textLength);
    const unsigned kind = unsigned{header.parts} >> OWN_PART_BITS;
    MessageFields fields(shared.loggerName, shared.time, static_cast<Level::LogLevel>(header.level), text,
                         header.line, shared.file, static_cast<MessageType>(kind & 3U), shared.logger);
    fields.form = static_cast<TextForm>(kind >> 2U & 3U);
    fields.place = shared.place;
    fields.thread = shared.thread;
    fields.context = shared.context;
    fields.values = values;
    return {fields, shared.number, static_cast<int>(header.answeredReports), 0};
}

// Reading untrusted bytes

std::optional<StoredMessage> StoredMessage::read(std::string_view packed) noexcept {
    UntrustedBytes bytes{packed};
    const PackedMessage::Unpacked message = PackedMessage::readParts(bytes, SharedFields());
    const MessageFields& fields = message.fields;
    const bool isWhole = bytes.isWhole && bytes.rest.empty() && isLevel(fields.level) &&
                         (fields.type == LOG || fields.type == CFG) && fields.form <= TextForm::FORMATTED &&
                         (fields.form == TextForm::READY || arePackedValues(fields.text)) &&
                         arePackedPairs(fields.values) && arePackedPairs(fields.context);
    return isWhole ? std::optional<StoredMessage>(StoredMessage(message)) : std::nullopt;
}

MessageFields StoredMessage::fields(std::string_view loggerName, const KnownPlace* place) const noexcept {
    MessageFields fields(unpacked_.fields);
    fields.loggerName = loggerName;
    fields.logger = nullptr;
    if (fields.place != nullptr) {
        fields.file = place == nullptr ? std::string_view() : place->file;
    }
    if (place == nullptr && fields.form == TextForm::FORMATTED) {
        fields.form = TextForm::STREAMED;
    }
    fields.place = place;
    return fields;
}

} // namespace Log
} // namespace ZAV
