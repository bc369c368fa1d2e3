// The library's part of the macros, and of `LogContext`.

#include "log/LogMacros.h"

#include "log/FormattedMessage.h"
#include "log/LogContext.h"
#include "log/Logger.h"
#include "log/MessageStream.h"
#include "log/MessageWithValues.h"
#include "log/PairValue.h"
#include "log/reentrancy/ThreadContext.h"
#include "log/text/MessageText.h"
#include "log/text/PackedPairs.h"
#include "log/text/PackedValues.h"
#include "log/tree/LoggerInside.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace ZAV {
namespace Log {

namespace {

/// Appends a text or a character, or stores it if there was a number before.
template <typename Text>
void writeOrKeepText(MessageText& text, Text value) {
    if (text.keepsValues()) {
        text.keep(value);
    } else {
        appendStreamed(text, value);
    }
}

/// Formats a number or an address, or stores it unformatted if the text is made later.
/// \tparam Kept the type as which it is stored
template <typename Kept, typename Value>
void writeOrKeep(MessageText& text, Value value) {
    if (text.keepsNumbers()) {
        text.keep(static_cast<Kept>(value));
    } else {
        appendStreamed(text, value);
    }
}

} // namespace

MessageStream::MessageStream(const Logger& logger) : text_(MessageText::take()) {
    if (logger.inside_->takesValues()) {
        text_.keepValues();
    }
}

MessageStream::~MessageStream() {
    MessageText::giveBack(text_);
}

std::ostream& MessageStream::stream() {
    return text_.stream();
}

void MessageStream::settle() {
    text_.settle();
}

void MessageStream::writeText(std::string_view text) {
    writeOrKeepText(text_, text);
}

void MessageStream::write(char character) {
    writeOrKeepText(text_, character);
}

void MessageStream::write(bool number) {
    writeOrKeep<bool>(text_, number);
}

void MessageStream::write(short number) {
    writeOrKeep<long long>(text_, number);
}

void MessageStream::write(unsigned short number) {
    writeOrKeep<unsigned long long>(text_, number);
}

void MessageStream::write(int number) {
    writeOrKeep<long long>(text_, number);
}

void MessageStream::write(unsigned number) {
    writeOrKeep<unsigned long long>(text_, number);
}

void MessageStream::write(long number) {
    writeOrKeep<long long>(text_, number);
}

void MessageStream::write(unsigned long number) {
    writeOrKeep<unsigned long long>(text_, number);
}

void MessageStream::write(long long number) {
    writeOrKeep<long long>(text_, number);
}

void MessageStream::write(unsigned long long number) {
    writeOrKeep<unsigned long long>(text_, number);
}

/// NaN is formatted by a stream, which its sign depends on.
void MessageStream::write(double number) {
    if (std::isnan(number)) {
        text_.makeText();
    }
    writeOrKeep<double>(text_, number);
}

/// There is no tag for the type.
void MessageStream::write(long double number) {
    text_.makeText();
    appendStreamed(text_, number);
}

/// Null is formatted by a stream as well.
void MessageStream::write(const void* address) {
    if (address == nullptr) {
        text_.makeText();
    }
    writeOrKeep<const void*>(text_, address);
}

void MessageStream::logTo(const Logger& logger, Level::LogLevel level, int line,
                          std::string_view file) const {
    logger.inside_->logFrom({file, {}, line, level}, text_.view(),
                            text_.keepsValues() ? TextForm::STREAMED : TextForm::READY);
}

namespace {

/// Packed values, on the stack unless they are long: those of more than 500 bytes take memory in each call.
class PackedOnStack {
public:
    /// \return room for so many bytes, of which `commit` keeps those that were written
    /// \throw std::bad_alloc
    char* room(std::size_t size) {
        bytes_.reserve(bytes_.size() + size);
        return bytes_.end();
    }
    void commit(const char* end) { bytes_.resize(static_cast<std::size_t>(end - bytes_.data())); }

    std::string_view view() const { return {bytes_.data(), bytes_.size()}; }

private:
    fmt::memory_buffer bytes_;
};

/// A C string is not read before this: some formats show only its address.
void append(PackedOnStack& packed, const TaggedValue& value) {
    if (value.kind == TaggedValue::Kind::C_STRING) {
        const std::size_t length = value.text == nullptr ? 0 : std::strlen(value.text);
        packed.commit(packCString(packed.room(packedCStringSize(length)), value.text, length));
    } else {
        packed.commit(packValue(packed.room(packedSize(value)), value));
    }
}

} // namespace

void FormattedMessage::logTagged(const Logger& logger, const Place& place, const TaggedValue* values,
                                 std::size_t count) {
    if (logger.inside_->takesValues()) {
        const KnownPlace& known = knownPlace(place);
        if (!known.mustFormatInCall) {
            PackedOnStack packed;
            std::for_each(values, values + count, [&](const TaggedValue& value) { append(packed, value); });
            logger.inside_->logFrom(known, packed.view(), TextForm::FORMATTED);
            return;
        }
    }
    const TakenText taken;
    if (succeeds(logger, place, [&] { appendFormatted(taken.text, place.format, values, count); })) {
        logText(logger, place, taken.text.view());
    }
}

void FormattedMessage::logText(const Logger& logger, const Place& place, std::string_view text) {
    logger.inside_->logFrom(place, text, TextForm::READY);
}

void FormattedMessage::logFailure(const Logger& logger, const Place& place, const char* reason) {
    const TakenText taken;
    showFailure(taken.text, place.format, reason);
    logText(logger, place, taken.text.view());
}

LongDoubleText::LongDoubleText(long double value) noexcept
    : size_(static_cast<std::size_t>(std::to_chars(characters_, characters_ + sizeof characters_, value).ptr -
                                     characters_)),
      kind_(TaggedValue::Kind::TEXT) {
    constexpr long double LARGEST = std::numeric_limits<double>::max();
    if (value >= -LARGEST && value <= LARGEST) {
        kind_ = TaggedValue::Kind::NUMBER;
    }
}

void MessageWithValues::logTagged(const Logger& logger, const Place& place, std::string_view text,
                                  const TaggedValue* keysAndValues, std::size_t count) {
    const TaggedValue* const end = keysAndValues + 2 * count;
    PackedOnStack pairs;
    for (const TaggedValue* key = keysAndValues; key != end; key += 2) {
        const std::string_view name(key->text, key->size);
        pairs.commit(packPair(pairs.room(packedPairSize(name, key[1])), name, key[1]));
    }
    logger.inside_->logFrom(place, text, pairs.view());
}

ContextEntry& LogContext::begin(std::string_view key, const TaggedValue& value) {
    return ThreadContext::own().add(key, value);
}

LogContext::~LogContext() {
    ThreadContext::remove(entry_);
}

} // namespace Log
} // namespace ZAV
