// Keeping and freeing what earlier processes have left in a queue file.

#include "log/queuefile/QueueFile.h"
#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <limits>

namespace ZAV {
namespace Log {

using namespace QueueFileFormat;
using Platform::ScopedLock;

/// Blocks of earlier processes stay in use as long as messages of their run wait. Their marks are copied
/// together into new blocks, so that processes killed repeatedly during recovery do not use more room each
/// time.
void QueueFile::keepEarlier() {
    earlierBlocks_ = earlier_->blocks();
    for (const StoredQueue::Block& block : earlierBlocks_) {
        slots_.use(block.slot, block.slots);
    }
    std::set<std::uint32_t> waiting;
    for (const StoredQueue::Message& message : earlier_->messages()) {
        waiting.insert(message.run->id);
    }
    freeEarlier([&waiting](const StoredQueue::Block& block) {
        return block.kind == FREED || (block.kind != MARKS && waiting.count(block.run) == 0);
    });
    if (copyMarks(waiting)) {
        freeEarlier([](const StoredQueue::Block& block) { return block.kind == MARKS; });
    }
}

/// \return false if there is no room for them
bool QueueFile::copyMarks(const std::set<std::uint32_t>& runs) {
    bool areAllCopied = true;
    for (const std::uint32_t run : runs) {
        const StoredQueue::Run& known = earlier_->runs().at(run);
        areAllCopied = copyMark(run, QUEUE_MARK, DONE, known.done) && areAllCopied;
        areAllCopied = copyMark(run, QUEUE_MARK, BATCH_END, known.batchEnd) && areAllCopied;
        areAllCopied = copyMark(run, QUEUE_MARK, TAKEN, known.taken) && areAllCopied;
        for (const auto& [key, number] : known.appenders) {
            areAllCopied = copyMark(run, APPENDER_MARK, key, number) && areAllCopied;
        }
    }
    return areAllCopied;
}

bool QueueFile::copyMark(std::uint32_t run, MarkKind kind, std::uint64_t key, std::uint64_t number) noexcept {
    QueueFileMark mark(addMark(frameWord(run, kind), key)); // no such mark exists yet
    mark.set(number);
    return static_cast<bool>(mark);
}

/// Frees messages first and marks last: if this is interrupted, messages still found must not appear to wait.
template <typename Predicate>
void QueueFile::freeEarlier(const Predicate& isOver) {
    for (const std::uint32_t kind : {FREED, MESSAGES, NOTES, MARKS}) {
        for (const StoredQueue::Block& block : earlierBlocks_) {
            if (block.kind == kind && isOver(block)) {
                freeSlots(block.slot, block.slots);
            }
        }
    }
    earlierBlocks_.erase(std::remove_if(earlierBlocks_.begin(), earlierBlocks_.end(), isOver),
                         earlierBlocks_.end());
}

void QueueFile::forgetEarlier() noexcept {
    const ScopedLock lock(lock_);
    if (earlier_ == nullptr || !isOfThisProcess()) {
        return;
    }
    // The process may be killed at any step below. First all runs are marked as done, so that nothing still
    // found of them waits.
    for (const auto& [run, known] : earlier_->runs()) {
        if (known.begin != 0) {
            QueueFileMark(findOrAddMark(run, QUEUE_MARK, DONE))
                .set(std::numeric_limits<std::uint64_t>::max());
        }
    }
    freeEarlier([](const StoredQueue::Block&) { return true; });
    earlier_.reset();
}

QueueFileMark QueueFile::earlierDone(std::uint32_t run) noexcept {
    return markOf(run, QUEUE_MARK, DONE);
}

QueueFileMark QueueFile::earlierMark(std::uint32_t run, std::string_view appenderName) noexcept {
    return markOf(run, APPENDER_MARK, keyOf(appenderName));
}

} // namespace Log
} // namespace ZAV
