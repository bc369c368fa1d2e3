#include "log/message/ReusedMessage.h"

#include "platform/ThreadSlot.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ZAV {
namespace Log {

namespace {

/// Characters of a text that a thread keeps room for.
constexpr std::size_t LONGEST_KEPT_TEXT = 4096;

LogMessage makeMessage(const MessageFields& fields) {
    return LogMessage(std::string(fields.loggerName), fields.time, fields.level, std::string(fields.text),
                      fields.line, std::string(fields.file), fields.type);
}

void dropUnusualMemory(std::string& text) {
    if (text.capacity() > LONGEST_KEPT_TEXT) {
        std::string().swap(text);
    }
}

} // namespace

/// The message of a thread.
struct ReusedMessage::Kept {
    explicit Kept(const MessageFields& fields) : message(makeMessage(fields)) {}

    LogMessage message;
    bool isTaken = false;

    /// Never destroyed, since threads may still log while the process ends.
    static Platform::ThreadSlot& slot() {
        static Platform::ThreadSlot& slot =
            *new Platform::ThreadSlot([](void* kept) { delete static_cast<Kept*>(kept); });
        return slot;
    }
};

ReusedMessage::ReusedMessage(const MessageFields& fields) {
    kept_ = static_cast<Kept*>(Kept::slot().get());
    if (kept_ == nullptr) {
        keepOne(fields);
    } else if (kept_->isTaken) {
        kept_ = nullptr;
    } else {
        fill(kept_->message, fields);
    }
    if (kept_ == nullptr) {
        message_ = &ownMessage_.emplace(makeMessage(fields));
        return;
    }
    kept_->isTaken = true;
    message_ = &kept_->message;
}

void ReusedMessage::keepOne(const MessageFields& fields) {
    std::unique_ptr<Kept> kept = std::make_unique<Kept>(fields);
    if (Kept::slot().set(kept.get())) {
        kept_ = kept.release();
    }
}

ReusedMessage::~ReusedMessage() {
    if (kept_ != nullptr) {
        dropUnusualMemory(kept_->message.text_);
        dropUnusualMemory(kept_->message.file_);
        kept_->isTaken = false;
    }
}

void ReusedMessage::fill(LogMessage& message, const MessageFields& fields) {
    message.loggerName_.assign(fields.loggerName);
    message.text_.assign(fields.text);
    message.file_.assign(fields.file);
    message.time_ = fields.time;
    message.level_ = fields.level;
    message.line_ = fields.line;
    message.type_ = fields.type;
}

} // namespace Log
} // namespace ZAV
