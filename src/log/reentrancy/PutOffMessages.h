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

/// The messages that appenders and listeners logged while another thread held the logger. Each is complete,
/// and its thread writes it as soon as it has left the library; it is kept here, and not with the thread, so
/// that it can be shown if the process ends first. A thread that stays in the library for long may put any
/// number off, so that no more than `MOST_OF_A_THREAD` are kept of each. All operations may be called from
/// any thread.
class PutOffMessages : public Platform::NeverDestroyed<PutOffMessages> {
public:
    struct PutOffMessage;
    using Messages = std::list<PutOffMessage>;

    static constexpr int MOST_OF_A_THREAD = 10'000;

    /// Gives the calling thread's first message to the appenders, with the logger's lock held.
    /// \param waitsForLogger whether to wait for that lock
    /// \return false if another thread holds the lock and the message stays
    using Write = bool (*)(Logger& logger, bool waitsForLogger);

    struct PutOffMessage {
        ThreadRecord* thread; ///< whose message it is
        int answeredReports;  ///< by which the thread logged it in answer to a report
        Logger* logger;
        LogMessage message;
        Write write;
        bool isBeingWritten;
    };

    /// The first message of the calling thread while it is being written. To be made with the logger's lock
    /// held; until it ends, the message is shown if the process ends: rather twice than not at all.
    class First {
    public:
        First() noexcept : message_(instance().beginFirst()) {}
        ~First() { instance().endFirst(); }
        First(const First&) = delete;
        First& operator=(const First&) = delete;

        /// \return null if the messages were shown
        const PutOffMessage* get() const noexcept { return message_; }

    private:
        const PutOffMessage* const message_;
    };

    /// Keeps a message of the calling thread, behind the earlier ones. If those are too many, the oldest is
    /// shown on the standard error stream and discarded. Once the messages have been shown, this one is shown
    /// at once.
    /// \throw std::bad_alloc if there is no room; the message is then not kept
    void keep(Logger& logger, const MessageFields& message, Write write);

    /// Writes the messages of the calling thread in their order, also those that are put off meanwhile. The
    /// thread must hold no lock of the library. The consumer, for which the holder of a logger may be
    /// waiting, leaves the rest if a logger is not free. What is thrown at a message is dropped: nobody is
    /// left who logged it.
    void writeOwn() noexcept;

    /// Shows the messages of all threads on the standard error stream, since the process ends.
    void showAll() noexcept;

    /// Forgets all messages in a forked child: they are the parent's to write.
    void forgetInChild() noexcept;

    /// \return how many messages were discarded because a thread had put off too many
    std::uint64_t discarded() const noexcept { return discarded_.load(std::memory_order_relaxed); }

private:
    friend NeverDestroyed;
    PutOffMessages() = default;

    static void showDiscarded(const Messages& discarded) noexcept;
    Messages takeBeyondLimit(ThreadRecord& thread) noexcept ZAV_LOG_REQUIRES(messagesLock_);
    const PutOffMessage* beginFirst() noexcept;
    void endFirst() noexcept;
    Write nextWrite(const ThreadRecord& thread, Logger*& logger) noexcept;
    Messages::iterator findFirst(const ThreadRecord& thread, bool isBeingWritten = false)
        ZAV_LOG_REQUIRES(messagesLock_);

    Platform::CriticalSection messagesLock_{Platform::AWAITED_BY_FORK};
    Messages messages_ ZAV_LOG_GUARDED_BY(messagesLock_);   ///< they do not change any more once it is closed
    bool closed_ ZAV_LOG_GUARDED_BY(messagesLock_) = false; ///< the messages are being shown, or have been
    std::atomic<std::uint64_t> discarded_{0};
};

} // namespace Log
} // namespace ZAV
