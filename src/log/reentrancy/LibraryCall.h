#pragma once

#include <cstdint>

namespace ZAV {
namespace Log {

class Appender;
class Dispatch;
class Ring;
class ThreadContext;

/// What the library knows of a thread that is inside it. It has no destructor, so that a thread may log to
/// its very end.
struct ThreadRecord {
    int calls;           ///< open `LibraryCall`s, one within the other
    int answeredReports; ///< reports of failures that the thread is answering, each an answer to the one
                         ///< before
    int nestedReports;   ///< reports delivered in answer to others, since the outermost call began
    int putOffMessages;  ///< messages of this thread that `PutOffMessages` keeps and has not begun to write
    bool showsDiscarded; ///< it is showing one that was discarded, since it had put off too many
    int writtenLines;    ///< lines of discarded messages that the thread is writing, one within the other
    const Dispatch* dispatch; ///< the innermost one that is open; null if none is
    std::uint64_t
        failedWrites; ///< of messages by appenders in this thread, also those that nobody is told of
    const Appender* keptLineOf; ///< the appender that has kept the line of its last message for a later write
    Ring* ring;                 ///< what the thread has queued; null before its first message and at its end
    bool isConsumer;            ///< logging calls may wait for the thread, which does not wait for loggers
    bool isMaking;              ///< it is making a configured appender
    bool keepsListeners;        ///< appenders that it destroys take no listeners of their names along
    bool hasEndedRing;          ///< the thread is ending, and gets no other ring
    ThreadContext* context;     ///< the pairs of its messages; null before the first one and at its end
    std::uint64_t systemId; ///< the system's id of the thread; 0 if it was not asked for yet in this process
};

/// \return the calling thread's own
ThreadRecord& threadRecord() noexcept;

/// Asks the system for the id of the calling thread.
/// \param thread the calling thread's record
void askSystemId(ThreadRecord& thread) noexcept;

/// \return the system's id of the calling thread, for which the system is asked once, and once more in a forked child
/// \param thread the calling thread's record
inline std::uint64_t systemIdOf(ThreadRecord& thread) noexcept {
    if (thread.systemId == 0) {
        askSystemId(thread);
    }
    return thread.systemId;
}

/// While it lives, what its thread logs counts as logged in answer to reports of failures.
///
/// A listener may answer a report by logging, that message may fail as well, and its report may be answered
/// again. The count goes along with a message that is written later, or by another thread, so that such a
/// chain has an end.
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

class ReusedMessage;

/// A stretch of a thread's work in which it may hold a lock of the library while appenders and command
/// listeners run, which may log themselves.
///
/// A logging call from within must not wait for another logger: its holder may be waiting for a lock that
/// this thread holds. Such a message is put off until the thread has left its outermost call, where it holds
/// no lock of the library any more.
class LibraryCall {
public:
    /// Begins the call; to be constructed before a lock is taken.
    /// \param record the calling thread's
    explicit LibraryCall(ThreadRecord& record = threadRecord()) noexcept
        : record_(record), isNested_(record_.calls++ > 0) {}

    /// Ends the call; the outermost one first writes the messages that were put off.
    ~LibraryCall() {
        if (!isNested_) {
            end();
        }
        --record_.calls;
    }

    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

    /// \return true if this call comes from an appender, a filter or a listener that another one runs
    bool isNested() const noexcept { return isNested_; }

    /// \return true if a message of this call has to be put off for the sake of order: earlier ones were
    bool hasPutOffMessages() const noexcept { return record_.putOffMessages > 0; }

    /// \return true if the calling thread is inside such a call
    static bool isOpen() noexcept { return threadRecord().calls > 0; }

private:
    void end() noexcept;

    ThreadRecord& record_;
    const bool isNested_;
};

/// A message that a thread is giving to the synchronous appenders of its logger.
class Dispatch {
public:
    /// \param message must live as long as this object
    /// \param record the calling thread's
    Dispatch(const ReusedMessage& message, ThreadRecord& record) noexcept
        : record_(record), message_(message), outer_(record_.dispatch) {
        record_.dispatch = this;
    }
    ~Dispatch() { record_.dispatch = outer_; }
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    /// Shows on the standard error stream the messages that the calling thread will not get through with: it
    /// is inside an appender or a listener and ends the process.
    static void showOpen() noexcept;

private:
    ThreadRecord& record_;
    const ReusedMessage& message_;
    const Dispatch* const outer_;
};

} // namespace Log
} // namespace ZAV
