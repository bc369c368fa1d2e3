#pragma once

#include "log/message/MessageFields.h"

#include <optional>

namespace ZAV {
namespace Log {

/// A message object for one call. It is the thread's own one, filled again, so that its texts need no new
/// memory; while that is in use, as when an appender logs, and in a thread that has all but ended, it is made
/// anew.
class ReusedMessage {
public:
    /// \throw std::bad_alloc
    explicit ReusedMessage(const MessageFields& fields);

    /// Gives the thread's own message back, without the memory of unusually long texts.
    ~ReusedMessage();

    ReusedMessage(const ReusedMessage&) = delete;
    ReusedMessage& operator=(const ReusedMessage&) = delete;

    const LogMessage& get() const { return *message_; }

private:
    static void fill(LogMessage& message, const MessageFields& fields);

    LogMessage* message_;
    std::optional<LogMessage> ownMessage_; ///< if it is not the thread's
};

} // namespace Log
} // namespace ZAV
