#include "log/message/MessageFields.h"

#include "log/text/MessageText.h"
#include "log/text/PackedPairs.h"

#include <cstddef>
#include <string>
#include <utility>

namespace ZAV {
namespace Log {

LogMessage MessageFields::makeMessage() const {
    std::string whole(ReadyText(*this).view());
    const std::size_t size = whole.size();
    appendPairs(whole, values, whole.empty());
    LogMessage message(std::string(loggerName), time, level, std::move(whole), line, std::string(file), type);
    message.messageSize_ = size;
    message.values_ = values;
    message.context_ = context;
    message.thread_ = thread;
    return message;
}

void MessageFields::takeTexts(const LogMessage& message) noexcept {
    const MessageFields taken(message);
    form = TextForm::READY;
    text = taken.text;
    pairsText = taken.pairsText;
    file = taken.file;
    values = taken.values;
    context = taken.context;
    thread = taken.thread;
}

ReadyText::ReadyText(const MessageFields& message) : view_(message.text) {
    if (message.form == TextForm::READY) {
        return;
    }
    MessageText& text = made_.emplace().text;
    if (message.form == TextForm::STREAMED) {
        text.useClassicLocale();
        appendStreamedValues(text, message.text);
    } else {
        appendFormattedValues(text, message.place->format, message.text);
    }
    view_ = text.view();
}

} // namespace Log
} // namespace ZAV
