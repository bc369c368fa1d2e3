#include "log/MessageStream.h"

#include "log/Logger.h"
#include "log/text/FloatText.h"
#include "log/text/MessageText.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace ZAV {
namespace Log {

namespace {

template <typename Value>
void streamValue(MessageText& text, Value value) {
    text.stream() << value;
    text.settle();
}

template <typename Integer>
void writeInteger(MessageText& text, Integer number) {
    if (!text.takesNumbers()) {
        streamValue(text, number);
        return;
    }
    constexpr std::size_t SIZE = std::numeric_limits<Integer>::digits10 + 2;
    char* const place = text.room(SIZE);
    text.commit(std::to_chars(place, place + SIZE, number).ptr);
}

} // namespace

MessageStream::MessageStream() : text_(MessageText::take()) {}

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
    if (text_.takesTexts()) {
        text_.append(text);
    } else {
        streamValue(text_, text);
    }
}

void MessageStream::write(char character) {
    if (text_.takesTexts()) {
        text_.append(std::string_view(&character, 1));
    } else {
        streamValue(text_, character);
    }
}

void MessageStream::write(bool number) {
    if (text_.takesNumbers()) {
        text_.append(number ? "1" : "0");
    } else {
        streamValue(text_, number);
    }
}

void MessageStream::write(short number) {
    writeInteger(text_, number);
}

void MessageStream::write(unsigned short number) {
    writeInteger(text_, number);
}

void MessageStream::write(int number) {
    writeInteger(text_, number);
}

void MessageStream::write(unsigned number) {
    writeInteger(text_, number);
}

void MessageStream::write(long number) {
    writeInteger(text_, number);
}

void MessageStream::write(unsigned long number) {
    writeInteger(text_, number);
}

void MessageStream::write(long long number) {
    writeInteger(text_, number);
}

void MessageStream::write(unsigned long long number) {
    writeInteger(text_, number);
}

/// Systems differ in whether the sign of what is not a number shows.
void MessageStream::write(double number) {
    if (text_.takesNumbers() && !std::isnan(number)) {
        text_.commit(writeGeneralFloat(text_.room(GENERAL_FLOAT_SIZE), number));
    } else {
        streamValue(text_, number);
    }
}

/// Few log one, and none of the ways that convert it without a stream is independent of the C locale.
void MessageStream::write(long double number) {
    streamValue(text_, number);
}

void MessageStream::write(const void* address) {
    if (address == nullptr || !text_.takesNumbers()) {
        streamValue(text_, address);
        return;
    }
    constexpr std::size_t SIZE = 2 + 2 * sizeof address;
    char* const place = text_.room(SIZE);
    place[0] = '0';
    place[1] = 'x';
    text_.commit(std::to_chars(place + 2, place + SIZE, reinterpret_cast<std::uintptr_t>(address), 16).ptr);
}

void MessageStream::logTo(const Logger& logger, Level::LogLevel level, int line,
                          std::string_view file) const {
    log(logger, level, text_.view(), line, file);
}

void MessageStream::log(const Logger& logger, Level::LogLevel level, std::string_view text, int line,
                        std::string_view file) {
    logger.logPassed(level, text, line, file);
}

} // namespace Log
} // namespace ZAV
