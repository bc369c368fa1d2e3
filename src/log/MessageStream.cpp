#include "log/MessageStream.h"

#include "log/Logger.h"
#include "log/text/MessageText.h"
#include "log/text/StreamedText.h"
#include "log/tree/LoggerInside.h"

#include <cmath>

namespace ZAV {
namespace Log {

namespace {

/// Writes a value, or puts it aside as it is if the text is made later.
/// \tparam Kept as what a value is kept
template <typename Kept, typename Value>
void writeOrKeep(MessageText& text, Value value) {
    if (text.keepsValues()) {
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
    writeOrKeep<std::string_view>(text_, text);
}

void MessageStream::write(char character) {
    writeOrKeep<char>(text_, character);
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

/// What is not a number comes from a stream, which its sign depends on.
void MessageStream::write(double number) {
    if (std::isnan(number)) {
        text_.makeText();
    }
    writeOrKeep<double>(text_, number);
}

/// It has no tag.
void MessageStream::write(long double number) {
    text_.makeText();
    appendStreamed(text_, number);
}

/// Null comes from a stream, too.
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

} // namespace Log
} // namespace ZAV
