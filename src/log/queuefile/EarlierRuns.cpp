// What becomes of what earlier processes have left in a queue file.

#include "log/queuefile/QueueFile.h"
#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <limits>

namespace ZAV {
namespace Log {

using namespace QueueFileFormat;
using Platform::ScopedLock;

/// What earlier processes have left stays in use as far as something waits of it. Their marks are put into
/// one place, so that processes which are killed again and again while they recover take no more room each
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
    QueueFileMark mark(addMark(frameWord(run, kind), key)); // there is no other one yet
    mark.set(number);
    return static_cast<bool>(mark);
}

/// The messages first and the marks last: what is still found of a run must not seem to wait.
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
    // The process may end at any of these steps: nothing waits from here on, and what may still be found of a
    // run says so.
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
