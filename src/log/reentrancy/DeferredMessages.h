#pragma once

#include "log/LogMessage.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"

#include <atomic>
#include <cstdint>
#include <list>

namespace ZAV {
namespace Log {

class Logger;
struct MessageFields;

/// Messages that appenders and listeners logged while another thread held the logger. Each is complete, and
/// its thread writes it as soon as it has left the library; it is kept here, not with the thread, so that it
/// can be shown if the process ends first. As a thread that stays in the library may defer any number, at
/// most `MAX_OF_A_THREAD` are kept for each thread. Thread-safe.
class DeferredMessages : public Platform::NeverDestroyed<DeferredMessages> {
public:
    struct DeferredMessage;
    using Messages = std::list<DeferredMessage>;

    static constexpr int MAX_OF_A_THREAD = 10'000;

    /// Delivers the calling thread's first message to the appenders under the logger's lock.
    /// \param waitsForLogger whether to wait for that lock
    /// \return false if another thread holds the lock; the message is then kept
    using Write = bool (*)(Logger& logger, bool waitsForLogger);

    struct DeferredMessage {
        ThreadRecord* thread; ///< that logged the message
        int answeredReports;  ///< the chain of reports that it was logged in answer to
        Logger* logger;
        LogMessage message;
        Write write;
        bool isBeingWritten;
    };

    /// The first message of the calling thread while it is being written. Construct it with the logger's lock
    /// held. If the process ends during its lifetime, the message is also shown: a duplicate is better than a
    /// loss.
    class First {
    public:
        First() noexcept : message_(instance().beginFirst()) {}
        ~First() { instance().endFirst(); }
        First(const First&) = delete;
        First& operator=(const First&) = delete;

        /// \return null if the messages have been shown
        const DeferredMessage* get() const noexcept { return message_; }

    private:
        const DeferredMessage* const message_;
    };

    /// Keeps a message of the calling thread, after the earlier ones. If there are too many, the oldest is
    /// shown on the standard error stream and discarded. After `showAll`, the message is shown at once.
    /// \throw std::bad_alloc; the message is then not kept
    void keep(Logger& logger, const MessageFields& message, Write write);

    /// Writes the messages of the calling thread in order, including those deferred meanwhile. The thread
    /// must hold no lock of the library. The consumer, for which the holder of a logger's lock may be
    /// waiting, leaves the rest if a logger is locked. An exception thrown for a message is dropped: its
    /// logging call has returned.
    void writeOwn() noexcept;

    /// Shows the messages of all threads on the standard error stream, at the end of the process.
    void showAll() noexcept;

    /// Discards all messages in a forked child: the parent writes them.
    void forgetInChild() noexcept;

    /// \return the number of messages discarded because a thread had deferred too many
    std::uint64_t discarded() const noexcept { return discarded_.load(std::memory_order_relaxed); }

private:
    friend NeverDestroyed;
    DeferredMessages() = default;

    static void showDiscarded(const Messages& discarded) noexcept;
    Messages takeBeyondLimit(ThreadRecord& thread) noexcept ZAV_LOG_REQUIRES(messagesLock_);
    const DeferredMessage* beginFirst() noexcept;
    void endFirst() noexcept;
    Write nextWrite(const ThreadRecord& thread, Logger*& logger) noexcept;
    Messages::iterator findFirst(const ThreadRecord& thread, bool isBeingWritten = false)
        ZAV_LOG_REQUIRES(messagesLock_);

    Platform::CriticalSection messagesLock_{Platform::AWAITED_BY_FORK};
    Messages messages_ ZAV_LOG_GUARDED_BY(messagesLock_);   ///< unchanged once `closed_` is set
    bool closed_ ZAV_LOG_GUARDED_BY(messagesLock_) = false; ///< the messages are being shown, or have been
    std::atomic<std::uint64_t> discarded_{0};
};

} // namespace Log
} // namespace ZAV
