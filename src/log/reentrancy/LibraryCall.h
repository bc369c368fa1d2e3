#pragma once

#include "log/reentrancy/ThreadRecord.h"

namespace ZAV {
namespace Log {

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
