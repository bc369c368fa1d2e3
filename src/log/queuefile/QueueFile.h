#pragma once

#include "log/config/DispatcherSettings.h"
#include "log/message/MessageFields.h"
#include "log/queuefile/QueueFileFormat.h"
#include "log/queuefile/StoredQueue.h"
#include "platform/CriticalSection.h"
#include "platform/MappedFile.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

class Appender;

/// Tracks which slots of a queue file are in use. Not thread-safe.
class Slots {
public:
    /// \param count number of the file's slots; the first one holds the head and is always in use
    /// \throw std::bad_alloc
    explicit Slots(std::size_t count = 0);

    std::size_t count() const noexcept { return isUsed_.size(); }

    /// \return the number of slots in use, not counting the head's
    std::size_t used() const noexcept { return used_; }

    /// Takes contiguous slots.
    /// \param kept number of other slots that must stay free
    /// \return the first one; 0 if there is no such range
    std::size_t take(std::size_t slots, std::size_t kept) noexcept;

    /// Marks free slots as used.
    void use(std::size_t first, std::size_t slots) noexcept;

    void free(std::size_t first, std::size_t slots) noexcept;

private:
    std::size_t find(std::size_t slots) const noexcept;

    std::vector<bool> isUsed_;
    std::size_t used_ = 0;
    std::size_t firstFree_ = 1; ///< all slots before it are in use
};

/// A mark in the file, which records progress. If the file had no room for it, it does nothing; more messages
/// than necessary are then delivered again.
class QueueFileMark {
public:
    QueueFileMark() noexcept = default;
    explicit QueueFileMark(QueueFileFormat::Mark* mark) noexcept : mark_(mark) {}

    explicit operator bool() const noexcept { return mark_ != nullptr; }

    /// Called by one thread at a time.
    void set(std::uint64_t number) noexcept;

private:
    QueueFileFormat::Mark* mark_ = nullptr;
};

/// The writer's side of a queue file: memory for the queue's blocks that outlives the process, together with
/// everything that another process needs to read them. Thread-safe; a forked child must not use it.
class QueueFile {
public:
    /// Whether a damaged file is opened anyway. It then reports no free room, so that nothing in it is
    /// changed.
    enum Damage { REFUSE_DAMAGED, ACCEPT_DAMAGED };

    /// Opens or creates the file, exclusively for this process.
    /// \param size in bytes, for a new file and for one in which nothing waits; 0 to create none and to keep
    ///        the size
    /// \throw LogException if that is not possible, if another process uses the file or if it is damaged; the
    ///        file is left unchanged
    QueueFile(const std::string& path, std::uint64_t size, Damage damage = REFUSE_DAMAGED);
    ~QueueFile();
    QueueFile(const QueueFile&) = delete;
    QueueFile& operator=(const QueueFile&) = delete;

    // Smallest and largest size of a file in bytes; other sizes are clamped.
    static constexpr std::uint64_t LEAST_SIZE = std::uint64_t{16} * QueueFileFormat::SLOT;
    static constexpr std::uint64_t MAX_SIZE =
        std::uint64_t{QueueFileFormat::MAX_SLOTS} * QueueFileFormat::SLOT;

    /// \return approximate number of messages that a file can hold
    /// \param size of the file in bytes
    /// \param textSize of each message in bytes
    static std::uint64_t capacity(std::uint64_t size, std::size_t textSize);

    /// In a forked child: leaves the file to the parent.
    void closeInChild() noexcept { file_.closeInChild(); }

    /// \return whether a path currently leads to this file
    bool isAt(const std::string& path) const noexcept { return file_.isAt(path); }

    /// \return what earlier processes have left; null after `forgetEarlier`
    StoredQueue* earlier() const noexcept { return earlier_.get(); }

    /// \return the mark up to which no appender needs an earlier run's messages any more
    QueueFileMark earlierDone(std::uint32_t run) noexcept;

    /// \return a mark of an earlier run, to be advanced as an appender gets that run's messages
    QueueFileMark earlierMark(std::uint32_t run, std::string_view appenderName) noexcept;

    /// Frees what earlier processes have left. No effect in a forked child.
    void forgetEarlier() noexcept;

    /// How much of the file messages may use.
    enum Room {
        USUAL_ROOM,
        ALSO_RESERVED ///< including the reserve for threads that find all other slots held by rings that
                      ///< hardly use them
    };

    /// The body of a block.
    struct Memory {
        char* bytes;        ///< null if there is none
        std::size_t size;   ///< in bytes
        std::uint64_t word; ///< first word of the block
    };

    /// \return memory for messages; none if the file is full or in a forked child
    /// \param wanted preferred size in bytes
    /// \param least minimum size in bytes
    Memory take(std::size_t wanted, std::size_t least, Room room) noexcept;

    /// No effect in a forked child.
    /// \param memory what `take` returned
    void giveBack(const Memory& memory) noexcept;

    /// \return whether the file has become half full, or some of its reserve was taken, since the last call
    bool isFilling() noexcept {
        return isFilling_.load(std::memory_order_relaxed) && isFilling_.exchange(false);
    }

    /// \return whether a block of that size would be available in an empty file
    bool fits(std::size_t size) const noexcept;

    /// Ensures that the file describes this process.
    /// \return false if it is full
    bool describeRun() noexcept;

    /// Identifies the records of this process.
    std::uint32_t run() const noexcept { return run_; }

    QueueFileMark mark(QueueFileFormat::QueueMark key) noexcept {
        return markOf(run_, QueueFileFormat::QUEUE_MARK, key);
    }
    QueueFileMark appenderMark(std::string_view name) noexcept;

private:
    bool readEarlier(std::string& problem);
    void begin();
    void keepEarlier() ZAV_LOG_REQUIRES(lock_);
    bool copyMarks(const std::set<std::uint32_t>& runs) ZAV_LOG_REQUIRES(lock_);
    bool copyMark(std::uint32_t run, QueueFileFormat::MarkKind kind, std::uint64_t key,
                  std::uint64_t number) noexcept ZAV_LOG_REQUIRES(lock_);
    template <typename Predicate>
    void freeEarlier(const Predicate& isOver) ZAV_LOG_REQUIRES(lock_);
    std::size_t slotOf(const Memory& memory) const noexcept;
    bool isOfThisProcess() const noexcept;
    Memory takeSlots(QueueFileFormat::BlockKind kind, std::size_t slots, std::size_t kept = 0) noexcept
        ZAV_LOG_REQUIRES(lock_);
    void freeSlots(std::size_t slot, std::size_t slots) noexcept ZAV_LOG_REQUIRES(lock_);
    bool note(std::string_view payload) noexcept ZAV_LOG_REQUIRES(lock_);
    QueueFileMark markOf(std::uint32_t run, QueueFileFormat::MarkKind kind, std::uint64_t key) noexcept;
    QueueFileFormat::Mark* findOrAddMark(std::uint32_t run, QueueFileFormat::MarkKind kind,
                                         std::uint64_t key) noexcept ZAV_LOG_REQUIRES(lock_);
    QueueFileFormat::Mark* addMark(std::uint64_t word, std::uint64_t key) noexcept ZAV_LOG_REQUIRES(lock_);

    Platform::MappedFile file_;
    const std::uint32_t run_;
    const unsigned generation_; ///< detects a forked child
    std::atomic<bool> isFilling_{false};
    std::unique_ptr<StoredQueue> earlier_;

    /// Held briefly: to take or return a block, or to add a note or a mark.
    mutable Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    Slots slots_ ZAV_LOG_GUARDED_BY(lock_);                               ///< none in a damaged file
    std::vector<QueueFileFormat::Mark*> marks_ ZAV_LOG_GUARDED_BY(lock_); ///< in use
    QueueFileFormat::Mark* nextMark_ ZAV_LOG_GUARDED_BY(lock_) = nullptr;
    std::size_t marksLeft_ ZAV_LOG_GUARDED_BY(lock_) = 0;
    std::uint32_t life_ ZAV_LOG_GUARDED_BY(lock_); ///< of the block taken last
    std::string runNote_ ZAV_LOG_GUARDED_BY(lock_);
    std::atomic<bool> isRunDescribed_{false};
    std::vector<StoredQueue::Block> earlierBlocks_ ZAV_LOG_GUARDED_BY(lock_); ///< still needed
};

// Notes in a block: what the address of a logger or a place in its messages stands for.

/// \return the payload of a note
/// \throw std::bad_alloc
std::string loggerNote(const MessageFields& message);
std::string placeNote(const KnownPlace& place);

/// The queue files of this process. Each stays open until the process ends, since the queue may still have
/// messages in it. Not thread-safe.
class QueueFiles {
public:
    /// \return the file that the properties name, opened or created, and never destroyed; null if they name
    ///         none
    /// \throw LogException if it cannot be used
    QueueFile* open(const Util::Properties& properties);

    /// \throw LogException if the properties name another file than those of the last `open`
    void refuseChange(const Util::Properties& properties) const;

    /// In a forked child: gives up the files, which the parent owns.
    void forgetInChild() noexcept;

private:
    std::vector<std::unique_ptr<QueueFile>> files_;
    QueueFileSettings settings_; ///< of the last `open`
};

/// Result of recovering the messages that earlier processes have left.
struct Recovery {
    bool hasAppenders = false;
    std::uint64_t messages = 0;      ///< written by at least one appender, for the first time in this process
    std::uint64_t lost = 0;          ///< messages for which there was no memory
    std::vector<std::string> failed; ///< names of the appenders that failed to write a message

    /// \return whether no message waits any more
    bool isAllGiven() const noexcept { return hasAppenders && failed.empty(); }
};

/// Delivers to each appender, in order, the messages that it has not got yet, and marks its progress in the
/// file. An appender that fails gets no more messages: those that it has not written wait for the next
/// recovery. The caller must be in a `LibraryCall`. An exception that a command listener throws for a report
/// is shown on the standard error stream.
/// \param file must contain something of earlier processes
Recovery recover(QueueFile& file, const std::vector<Appender*>& appenders);

} // namespace Log
} // namespace ZAV
