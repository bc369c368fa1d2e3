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

} // namespace Log
} // namespace ZAV
