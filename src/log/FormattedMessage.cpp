#include "log/FormattedMessage.h"

#include "log/MessageStream.h"
#include "log/text/FormattedText.h"
#include "log/text/MessageText.h"

#include <string>

namespace ZAV {
namespace Log {

namespace {

/// The calling thread's text for as long as this object lives.
struct TakenText {
    TakenText() : text(MessageText::take()) {}
    ~TakenText() { MessageText::giveBack(text); }
    TakenText(const TakenText&) = delete;
    TakenText& operator=(const TakenText&) = delete;

    MessageText& text;
};

} // namespace

void FormattedMessage::logTagged(Logger& logger, const Place& place, const TaggedValue* values,
                                 std::size_t count) {
    const TakenText taken;
    if (succeeds(logger, place, [&] { appendFormatted(taken.text, place.format, values, count); })) {
        logText(logger, place, taken.text.view());
    }
}

void FormattedMessage::logText(Logger& logger, const Place& place, std::string_view text) {
    MessageStream::log(logger, place.level, text, place.line, place.file);
}

void FormattedMessage::logFailure(Logger& logger, const Place& place, const char* reason) {
    std::string text(place.format);
    text.append(" [not formatted: ").append(reason != nullptr ? reason : "unknown exception").append("]");
    logText(logger, place, text);
}

} // namespace Log
} // namespace ZAV
