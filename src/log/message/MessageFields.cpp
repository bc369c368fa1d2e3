#include "log/message/MessageFields.h"

#include "log/text/FormattedText.h"
#include "log/text/PackedPairs.h"
#include "log/text/StreamedText.h"

#include <string>

namespace ZAV {
namespace Log {

LogMessage MessageFields::makeMessage() const {
    const ReadyText ready(*this);
    LogMessage message(std::string(loggerName), time, level, std::string(ready.view()).append(ready.pairs()),
                       line, std::string(file), type);
    message.messageSize_ = ready.view().size();
    message.values_ = values;
    message.context_ = context;
    message.thread_ = thread;
    return message;
}

void MessageFields::takeTexts(const LogMessage& message) noexcept {
    const std::string_view whole = message.text_;
    form = TextForm::READY;
    text = whole.substr(0, message.messageSize_);
    pairsText = whole.substr(message.messageSize_);
    file = message.file_;
    values = message.values_;
    context = message.context_;
    thread = message.thread_;
}

ReadyText::ReadyText(const MessageFields& message) : view_(message.text), pairs_(message.pairsText) {
    if (message.form != TextForm::READY || (!message.values.empty() && message.pairsText.empty())) {
        make(message);
    }
}

/// The pairs stand in the same memory, behind the text.
void ReadyText::make(const MessageFields& message) {
    MessageText& text = made_.emplace().text;
    switch (message.form) {
    case TextForm::READY:
        text.append(message.text);
        break;
    case TextForm::STREAMED:
        text.useClassicLocale();
        appendStreamedValues(text, message.text);
        break;
    case TextForm::FORMATTED:
        appendFormattedValues(text, message.place->format, message.text);
        break;
    }
    const std::size_t size = text.view().size();
    appendPairs(text, message.values);
    view_ = text.view().substr(0, size);
    pairs_ = text.view().substr(size);
}

} // namespace Log
} // namespace ZAV
