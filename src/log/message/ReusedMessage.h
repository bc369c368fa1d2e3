#pragma once

#include "log/message/MessageFields.h"

#include <optional>

namespace ZAV {
namespace Log {

/// A message object for one call. It is the thread's own one, filled again, so that its texts need no new
/// memory; while that is in use, as when an appender logs, it is made anew.
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
    struct Kept;

    void keepOne(const MessageFields& fields);
    static void fill(LogMessage& message, const MessageFields& fields);

    const LogMessage* message_;
    Kept* kept_;                           ///< null if the message is not the thread's
    std::optional<LogMessage> ownMessage_; ///< if it is not the thread's
};

} // namespace Log
} // namespace ZAV
