#include "log/message/ReusedMessage.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ZAV {
namespace Log {

namespace {

/// Characters of a text that a thread keeps room for.
constexpr std::size_t LONGEST_KEPT_TEXT = 4096;

/// The message of a thread. Without a destructor, so that it can be looked at to the very end of the thread.
struct ThreadsMessage {
    LogMessage* message; ///< null before the first use, and when the thread ends
    bool isTaken;        ///< in use, or gone for good
};

thread_local ThreadsMessage threadsMessage{};

/// Frees the message when the thread ends.
struct ThreadsMessageOwner {
    std::unique_ptr<LogMessage> message;

    ~ThreadsMessageOwner() { threadsMessage = {nullptr, true}; }
};

LogMessage makeMessage(const MessageFields& fields) {
    return LogMessage(std::string(fields.loggerName), fields.time, fields.level, std::string(fields.text),
                      fields.line, std::string(fields.file), fields.type);
}

LogMessage* makeThreadsMessage(const MessageFields& fields) {
    static thread_local ThreadsMessageOwner owner;
    owner.message = std::make_unique<LogMessage>(makeMessage(fields));
    return owner.message.get();
}

void dropUnusualMemory(std::string& text) {
    if (text.capacity() > LONGEST_KEPT_TEXT) {
        std::string().swap(text);
    }
}

} // namespace

ReusedMessage::ReusedMessage(const MessageFields& fields) {
    ThreadsMessage& threads = threadsMessage;
    if (threads.isTaken) {
        message_ = &ownMessage_.emplace(makeMessage(fields));
        return;
    }
    if (threads.message == nullptr) {
        threads.message = makeThreadsMessage(fields);
    } else {
        fill(*threads.message, fields);
    }
    message_ = threads.message;
    threads.isTaken = true;
}

ReusedMessage::~ReusedMessage() {
    if (!ownMessage_) {
        dropUnusualMemory(message_->text_);
        dropUnusualMemory(message_->file_);
        threadsMessage.isTaken = false;
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
