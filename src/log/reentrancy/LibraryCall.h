#pragma once

#include "log/LogMessage.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <atomic>
#include <cstdint>
#include <list>

namespace ZAV {
namespace Log {

class Appender;
class Dispatch;
class Logger;
struct MessageFields;
class ReusedMessage;
class Ring;
class ThreadContext;

/// The library's state for one thread. Trivially destructible, so that a thread may log until its very end.
struct ThreadRecord {
    int calls;            ///< nesting depth of open `LibraryCall`s
    int answeredReports;  ///< length of the chain of failure reports that the thread is answering, each an
                          ///< answer to the one before
    int nestedReports;    ///< reports delivered in answer to others, since the outermost call began
    int deferredMessages; ///< messages of this thread that `DeferredMessages` keeps and has not begun to
                          ///< write
    bool showsDiscarded;  ///< it is showing a message discarded because it had deferred too many
    int writtenLines;     ///< nesting depth of the lines of discarded messages that the thread is writing
    const Dispatch* dispatch;   ///< the innermost one that is open; null if none is
    std::uint64_t failedWrites; ///< by appenders in this thread, reported or not
    const Appender* keptLineOf; ///< the appender that has buffered the line of its last message
    Ring* ring;             ///< the thread's queued messages; null before its first message and at its end
    bool isConsumer;        ///< logging calls may wait for this thread, so it must not wait for loggers
    bool isMaking;          ///< it is creating a configured appender
    bool keepsListeners;    ///< destroying an appender leaves the listeners registered for its name
    bool hasEndedRing;      ///< the thread is ending and gets no new ring
    ThreadContext* context; ///< the pairs of its messages; null before the first pair and at its end
    std::uint64_t systemId; ///< the operating system's thread ID; 0 if not yet queried in this process
};

/// \return the calling thread's record
ThreadRecord& threadRecord() noexcept;

/// Queries the operating system's ID of the calling thread.
/// \param thread the calling thread's record
void querySystemId(ThreadRecord& thread) noexcept;

/// \return the operating system's ID of the calling thread; cached, and queried again in a forked child
/// \param thread the calling thread's record
inline std::uint64_t systemIdOf(ThreadRecord& thread) noexcept {
    if (thread.systemId == 0) {
        querySystemId(thread);
    }
    return thread.systemId;
}

/// Marks what the thread logs during its lifetime as logged in answer to failure reports.
///
/// A listener may answer a report by logging; that message may fail as well, and its report be answered
/// again. The count travels with a message that is written later or by another thread, so that such a chain
/// is bounded.
class ReportAnswer {
public:
    /// \param record the calling thread's
    /// \param answeredReports the length of the chain of reports that led here; 0 if nothing is answered
    ReportAnswer(ThreadRecord& record, int answeredReports) noexcept
        : record_(record), before_(record_.answeredReports) {
        record_.answeredReports = answeredReports;
    }
    ~ReportAnswer() { record_.answeredReports = before_; }
    ReportAnswer(const ReportAnswer&) = delete;
    ReportAnswer& operator=(const ReportAnswer&) = delete;

private:
    ThreadRecord& record_;
    const int before_;
};

/// A scope in which a thread may hold a lock of the library while appenders and command listeners run, which
/// may log themselves.
///
/// A nested logging call must not wait for another logger: the holder of its lock may be waiting for a lock
/// that this thread holds. Such a message is deferred until the thread leaves its outermost call, when it no
/// longer holds any lock of the library.
class LibraryCall {
public:
    /// Construct it before taking a lock.
    /// \param record the calling thread's
    explicit LibraryCall(ThreadRecord& record = threadRecord()) noexcept
        : record_(record), isNested_(record_.calls++ > 0) {}

    /// The outermost call first writes the messages that were deferred.
    ~LibraryCall() {
        if (!isNested_) {
            end();
        }
        --record_.calls;
    }

    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

    /// \return true if this call comes from an appender, a filter or a listener run by another call
    bool isNested() const noexcept { return isNested_; }

    /// \return true if a message of this call must be deferred to preserve order, because earlier ones were
    bool hasDeferredMessages() const noexcept { return record_.deferredMessages > 0; }

    /// \return true if the calling thread is inside such a call
    static bool isOpen() noexcept { return threadRecord().calls > 0; }

private:
    void end() noexcept;

    ThreadRecord& record_;
    const bool isNested_;
};

/// A message that a thread is delivering to the synchronous appenders of its logger.
class Dispatch {
public:
    /// \param message must outlive this object
    /// \param record the calling thread's
    Dispatch(const ReusedMessage& message, ThreadRecord& record) noexcept
        : record_(record), message_(message), outer_(record_.dispatch) {
        record_.dispatch = this;
    }
    ~Dispatch() { record_.dispatch = outer_; }
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    /// Shows on the standard error stream the messages whose dispatch the calling thread will not complete,
    /// because it ends the process from inside an appender or a listener.
    static void showOpen() noexcept;

private:
    ThreadRecord& record_;
    const ReusedMessage& message_;
    const Dispatch* const outer_;
};

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
