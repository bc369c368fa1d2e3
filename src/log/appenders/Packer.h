#pragma once

#include "log/async/Threading.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

class Appender;

/// Packs rolled files, one after another, in a low-priority thread of its own. The thread exists only while
/// files are queued, so it does not keep a process alive.
///
/// A forked child drops the queue, which its parent processes.
class Packer : public Platform::NeverDestroyed<Packer> {
public:
    /// Queues a file for packing. If it is already queued or being packed, that job is taken over for this
    /// user.
    /// \param user the key for `forget`, named in failure reports
    /// \param mayGrow whether a forked child may still write to it, so that packing is delayed by a second
    void pack(const Appender* user, const std::string& path, bool mayGrow);

    /// \return whether the queue is empty
    bool isIdle() ZAV_LOG_EXCLUDES(lock_);

    /// Reports a failure of the series from the thread, for a caller whose lock must not be held when
    /// listeners are called.
    void report(const Appender* user, const std::string& problem);

    /// Removes that user's jobs, and interrupts one that is in progress. Once it returns, none of them runs
    /// any more; but inside an appender or a listener it does not wait for that, and nowhere for more than
    /// seconds.
    void forget(const Appender* user) noexcept;

private:
    struct Job {
        const Appender* user; ///< changes under the lock, like `name`, even for the job in progress
        std::string name;
        std::string path;    ///< file to be packed, if `problem` is empty
        std::string problem; ///< failure to be reported
        Deadline pause;      ///< the job is not begun before this
    };

    friend NeverDestroyed;
    Packer();

    void add(Job job) ZAV_LOG_EXCLUDES(lock_);
    void startIfNeeded() noexcept ZAV_LOG_EXCLUDES(lock_);
    bool isTakenOver(const Job& job) ZAV_LOG_REQUIRES(lock_);
    static void run();
    const Job* first() ZAV_LOG_EXCLUDES(lock_);
    bool isIn(const Appender* user) ZAV_LOG_EXCLUDES(lock_);
    void work(const Job& job);
    void deliver(const Job& job, const std::string& problem) ZAV_LOG_EXCLUDES(lock_);
    void removeFirst() ZAV_LOG_EXCLUDES(lock_);
    void beginInChild() noexcept;

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK}; ///< held only briefly
    std::list<Job> jobs_ ZAV_LOG_GUARDED_BY(lock_); ///< while the thread runs, it works on the first
    bool isRunning_ ZAV_LOG_GUARDED_BY(lock_) = false;
    std::atomic<bool> isInterrupted_{
        false};           ///< whether the first job is to be given up; written under the lock
    WaitPoint waitPoint_; ///< notified when that is set, and when a job is over
};

// Packing one file

/// Result of packing a file.
struct PackingResult {
    enum Result {
        DONE,
        INTERRUPTED, ///< no part of it is left on disk
        FAILED
    };
    Result result;
    std::string problem; ///< the error text if it has failed
};

/// Packs a rolled file, so that at any moment, even after a kill, the plain file or the complete packed one
/// exists. A file that grows meanwhile is packed again; one that is deleted meanwhile stays deleted. A file
/// that another process is packing, and has locked, is left to that.
///
/// Called by one thread of the process at a time.
/// \param path the plain file, which is deleted at the end
/// \param isInterrupted polled every few milliseconds
PackingResult packFile(const std::string& path, const std::atomic<bool>& isInterrupted);

/// Deletes the partial output of an aborted packing, unless one is in progress.
/// \param path the plain file, which may be gone
void removeAbandonedPart(const std::string& path);

/// The last step of packing: replaces the plain file by a complete packed one. An existing packed file is an
/// older version, which is not read while the plain file exists.
/// \param size size of the plain file when it was packed
/// \return nothing if it has grown since, and must be packed again
std::optional<PackingResult> replaceByPacked(const std::string& path, std::uint64_t size);

/// For a forked child, which does not have the packing thread: closes that thread's open files.
void closePackedFilesInChild() noexcept;

} // namespace Log
} // namespace ZAV
