#pragma once

#include "log/LogMessage.h"
#include "log/reentrancy/ThreadRecord.h"
#include "platform/CriticalSection.h"

#include <list>

namespace ZAV {
namespace Log {

class Logger;
struct MessageFields;

/// The messages that appenders and listeners logged while another thread held the logger. Each is complete,
/// and its thread writes it as soon as it has left the library; it is kept here, and not with the thread, so
/// that it can be shown if the process ends first. All operations may be called from any thread.
class PutOffMessages {
public:
    struct PutOffMessage;
    using Messages = std::list<PutOffMessage>;

    /// Takes the calling thread's first message with the logger's lock held, and gives it to the appenders.
    /// \param mayWait whether to wait for that lock
    /// \return false if another thread holds the lock and the message stays
    using Write = bool (*)(Logger& logger, bool mayWait);

    struct PutOffMessage {
        ThreadRecord* thread; ///< whose message it is
        int answeredReports;  ///< by which the thread logged it in answer to a report
        Logger* logger;
        LogMessage message;
        Write write;
    };

    /// Never destroyed, since threads may still log while the process ends.
    static PutOffMessages& instance();

    /// Keeps a message of the calling thread, behind the earlier ones. Once the messages have been shown, it
    /// is shown at once.
    /// \throw std::bad_alloc if there is no room; the message is then not kept
    void keep(Logger& logger, const MessageFields& message, Write write);

    /// Writes the messages of the calling thread in their order, also those that are put off meanwhile. The
    /// thread must hold no lock of the library. The consumer, for which the holder of a logger may be waiting,
    /// leaves the rest if a logger is not free. What is thrown at a message is dropped: nobody is left who
    /// logged it.
    void writeOwn() noexcept;

    /// Takes the first message of the calling thread: with the logger's lock held, since it can be shown
    /// until then if the process ends.
    /// \return a list of one message, or an empty one if the messages were shown
    Messages takeFirst() noexcept;

    /// Shows the messages of all threads on the standard error stream, since the process ends.
    void showAll() noexcept;

    /// Forgets all messages in a forked child: they are the parent's to write.
    void forgetInChild() noexcept;

private:
    PutOffMessages() = default;

    Write nextWrite(const ThreadRecord& thread, Logger*& logger) noexcept;
    Messages::iterator findFirst(const ThreadRecord& thread) ZAV_LOG_REQUIRES(messagesLock_);

    Platform::CriticalSection messagesLock_{Platform::AWAITED_BY_FORK};
    Messages messages_ ZAV_LOG_GUARDED_BY(messagesLock_);
    bool closed_ ZAV_LOG_GUARDED_BY(messagesLock_) = false; ///< the messages have been shown
};

} // namespace Log
} // namespace ZAV
