#include "log/message/MessageFields.h"

#include "log/text/MessageText.h"
#include "log/text/PackedPairs.h"
#include "platform/Process.h"
#include "platform/Threads.h"

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

// The message that appenders get

namespace {

/// A thread keeps the memory of texts up to this length.
constexpr std::size_t LONGEST_KEPT_TEXT = 4096;

void dropUnusualMemory(std::string& text) {
    if (text.capacity() > LONGEST_KEPT_TEXT) {
        std::string().swap(text);
    }
}

} // namespace

/// A message and its owner.
struct ReusedMessage::Kept {
    explicit Kept(const MessageFields& fields)
        : message(fields.makeMessage()), shownFields(fields), loggerName(fields.loggerName) {}

    void fill(const MessageFields& fields);

    LogMessage message;
    MessageFields shownFields;    ///< refer to `message`; set by `keptFields`
    std::string_view loggerName;  ///< the logger's own string
    bool isOwnedByThread = false; ///< whether it is kept until its thread ends
    bool isTaken = true;

    struct Slot : Platform::ThreadSlot, Platform::NeverDestroyed<Slot> {
        Slot() : ThreadSlot([](void* kept) { delete static_cast<Kept*>(kept); }) {}
    };
};

/// Initialised at load, so that no thread makes the slot while another one forks.
const bool ReusedMessage::hasSlotFromLoad = (Kept::Slot::instance(), true);

const LogMessage& ReusedMessage::get() {
    if (kept_ == nullptr) {
        take();
    }
    return kept_->message;
}

const MessageFields& ReusedMessage::keptFields() const noexcept {
    MessageFields& fields = kept_->shownFields;
    fields = fields_;
    fields.takeTexts(kept_->message);
    return fields;
}

void ReusedMessage::take() {
    auto* const threads = static_cast<Kept*>(Kept::Slot::instance().get());
    if (threads != nullptr && !threads->isTaken) {
        fillTaken(*threads);
        kept_ = threads;
        return;
    }
    kept_ = new Kept(fields_);
    kept_->isOwnedByThread = Kept::Slot::instance().get() == nullptr && Kept::Slot::instance().set(kept_);
}

/// Allocating may run a function of the application, which may log.
void ReusedMessage::fillTaken(Kept& kept) const {
    kept.isTaken = true;
    try {
        kept.fill(fields_);
    } catch (...) {
        kept.isTaken = false;
        throw;
    }
}

void ReusedMessage::giveBack() noexcept {
    if (!kept_->isOwnedByThread) {
        delete kept_;
        return;
    }
    dropUnusualMemory(kept_->message.text_);
    dropUnusualMemory(kept_->message.file_);
    dropUnusualMemory(kept_->message.values_);
    dropUnusualMemory(kept_->message.context_);
    kept_->isTaken = false;
}

/// A message often has the same logger, file and context as the one before.
void ReusedMessage::Kept::fill(const MessageFields& fields) {
    if (!refersToSameMemory(loggerName, fields.loggerName)) {
        message.loggerName_.assign(fields.loggerName);
        loggerName = fields.loggerName;
    }
    if (!equalTexts(message.file_, fields.file)) {
        message.file_.assign(fields.file);
    }
    message.text_.clear(); // faster than assigning
    message.text_.append(ReadyText(fields).view());
    message.messageSize_ = message.text_.size();
    if (!fields.values.empty() || !message.values_.empty()) {
        appendPairs(message.text_, fields.values, message.text_.empty());
        message.values_.assign(fields.values);
    }
    if (!equalTexts(message.context_, fields.context)) {
        message.context_.assign(fields.context);
    }
    message.thread_ = fields.thread;
    message.time_ = fields.time;
    message.level_ = fields.level;
    message.line_ = fields.line;
    message.type_ = fields.type;
}

} // namespace Log
} // namespace ZAV
