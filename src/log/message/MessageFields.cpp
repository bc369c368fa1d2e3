#include "log/message/MessageFields.h"

#include "log/text/FormattedText.h"
#include "log/text/StreamedText.h"

#include <string>

namespace ZAV {
namespace Log {

LogMessage MessageFields::makeMessage() const {
    return LogMessage(std::string(loggerName), time, level, std::string(ReadyText(*this).view()), line,
                      std::string(file), type);
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
