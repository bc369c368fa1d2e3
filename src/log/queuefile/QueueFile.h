#pragma once

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

/// Which slots of a queue file are in use. It has no lock.
class Slots {
public:
    /// \param count of the file's slots, of which the first one, with the head, is in use
    /// \throw std::bad_alloc
    explicit Slots(std::size_t count = 0);

    std::size_t count() const noexcept { return isUsed_.size(); }

    /// \return how many are in use, the head's not counted
    std::size_t used() const noexcept { return used_; }

    /// Takes slots that lie behind each other.
    /// \param kept how many others have to stay free
    /// \return the first one; 0 if there are none
    std::size_t take(std::size_t slots, std::size_t kept) noexcept;

    /// Says that free slots are in use.
    void use(std::size_t first, std::size_t slots) noexcept;

    void free(std::size_t first, std::size_t slots) noexcept;

private:
    std::size_t find(std::size_t slots) const noexcept;

    std::vector<bool> isUsed_;
    std::size_t used_ = 0;
    std::size_t firstFree_ = 1; ///< all before it are in use
};

/// A mark in the file, which says how far something has come. Where there is no room for one it does nothing,
/// and more is delivered again than need be.
class QueueFileMark {
public:
    QueueFileMark() noexcept = default;
    explicit QueueFileMark(QueueFileFormat::Mark* mark) noexcept : mark_(mark) {}

    explicit operator bool() const noexcept { return mark_ != nullptr; }

    /// Of one thread at a time.
    void set(std::uint64_t number) noexcept;

private:
    QueueFileFormat::Mark* mark_ = nullptr;
};

/// The writer's side of a queue file: memory for the queue's blocks that outlives the process, together with
/// all that somebody else needs to read them. All operations may be called from any thread of the process
/// that made the object; a forked child must not touch it.
class QueueFile {
public:
    /// Whether a damaged file is opened all the same. It has no room for anything, so nothing is changed in
    /// it.
    enum Damage { REFUSE_DAMAGED, ACCEPT_DAMAGED };

    /// Opens the file or makes it, for this process alone.
    /// \param size in bytes, of a new file and of one in which nothing waits; 0 to make none and to keep its size
    /// \throw LogException if that is not possible, if another process uses it or if it is damaged; it is left as
    ///        it was
    QueueFile(const std::string& path, std::uint64_t size, Damage damage = REFUSE_DAMAGED);
    ~QueueFile();
    QueueFile(const QueueFile&) = delete;
    QueueFile& operator=(const QueueFile&) = delete;

    // What a file may hold at least and at most, in bytes; any other size counts as one of these.
    static constexpr std::uint64_t LEAST_SIZE = std::uint64_t{16} * QueueFileFormat::SLOT;
    static constexpr std::uint64_t MOST_SIZE =
        std::uint64_t{QueueFileFormat::MOST_SLOTS} * QueueFileFormat::SLOT;

    /// \return about how many messages a file can hold
    /// \param size of the file in bytes
    /// \param textSize of each message in bytes
    static std::uint64_t capacity(std::uint64_t size, std::size_t textSize);

    /// In a forked child: leaves the file to the parent.
    void closeInChild() noexcept { file_.closeInChild(); }

    /// \return whether a path leads to this file now
    bool isAt(const std::string& path) const noexcept { return file_.isAt(path); }

    /// \return what earlier processes have left; null once it was forgotten
    StoredQueue* earlier() const noexcept { return earlier_.get(); }

    /// \return the mark up to which an earlier run's messages need no appender any more
    QueueFileMark earlierDone(std::uint32_t run) noexcept;

    /// \return a mark of an earlier run, which an appender moves on as it gets that run's messages
    QueueFileMark earlierMark(std::uint32_t run, std::string_view appenderName) noexcept;

    /// Frees what earlier processes have left. Without effect in a forked child.
    void forgetEarlier() noexcept;

    /// How much of the file messages may take.
    enum Room {
        USUAL_ROOM,
        ALSO_RESERVED ///< also what is kept for those who find all else taken by others that hardly use it
    };

    /// The body of a block.
    struct Memory {
        char* bytes;        ///< null if there is none
        std::size_t size;   ///< in bytes
        std::uint64_t word; ///< that the block begins with
    };

    /// \return memory for messages; none if the file is full, and in a forked child
    /// \param wanted how large it should be, in bytes
    /// \param least how large it must be
    Memory take(std::size_t wanted, std::size_t least, Room room) noexcept;

    /// Without effect in a forked child.
    /// \param memory what `take` returned
    void giveBack(const Memory& memory) noexcept;

    /// \return whether the file has become half full, or some of its reserve was taken, since this was asked last
    bool isFilling() noexcept {
        return isFilling_.load(std::memory_order_relaxed) && isFilling_.exchange(false);
    }

    /// \return whether a block of that size could be had if the file was empty
    bool fits(std::size_t size) const noexcept;

    /// Sees to it that the file says which process this is.
    /// \return false if it is full
    bool describeRun() noexcept;

    /// What each record of this process begins with.
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
    const unsigned generation_; ///< tells a forked child
    std::atomic<bool> isFilling_{false};
    std::unique_ptr<StoredQueue> earlier_;

    /// Held for short steps: a block is taken or given back, a note or a mark is added.
    mutable Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    Slots slots_ ZAV_LOG_GUARDED_BY(lock_);                               ///< none in a damaged file
    std::vector<QueueFileFormat::Mark*> marks_ ZAV_LOG_GUARDED_BY(lock_); ///< in use
    QueueFileFormat::Mark* nextMark_ ZAV_LOG_GUARDED_BY(lock_) = nullptr;
    std::size_t marksLeft_ ZAV_LOG_GUARDED_BY(lock_) = 0;
    std::uint32_t life_ ZAV_LOG_GUARDED_BY(lock_); ///< of the block taken last
    std::string runNote_ ZAV_LOG_GUARDED_BY(lock_);
    std::atomic<bool> isRunDescribed_{false};
    std::vector<StoredQueue::Block> earlierBlocks_ ZAV_LOG_GUARDED_BY(lock_); ///< of what waits still
};

// What a block says of its messages: what the address of a logger or a place stands for.

/// \return the payload of a note
/// \throw std::bad_alloc
std::string loggerNote(const MessageFields& message);
std::string placeNote(const KnownPlace& place);

} // namespace Log
} // namespace ZAV
