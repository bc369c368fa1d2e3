// What a queue file says of runs of programs: notes on this one and on what its messages refer to, marks of
// its progress, and what earlier ones have left.

#include "log/queuefile/QueueFile.h"
#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace ZAV {
namespace Log {

using namespace QueueFileFormat;
using Platform::ScopedLock;

// Notes

/// Writes the note twice, each in a block of its own, or not at all.
bool QueueFile::note(std::string_view payload) noexcept {
    const std::size_t size = recordSize(payload.size());
    const std::size_t slots = slotsFor(size);
    Memory copies[] = {takeSlots(NOTES, slots), takeSlots(NOTES, slots)};
    for (const Memory& copy : copies) {
        if (copies[1].bytes != nullptr) {
            writeNote(copy.word, copy.bytes, run_, payload, copy.size - size < sizeof(Frame));
        } else if (copy.bytes != nullptr) {
            freeSlots(slotOf(copy), slots);
        }
    }
    return copies[1].bytes != nullptr;
}

bool QueueFile::describeRun() noexcept {
    if (isRunDescribed_.load(std::memory_order_relaxed)) {
        return true;
    }
    const ScopedLock lock(lock_);
    if (!isRunDescribed_ && note(runNote_)) {
        isRunDescribed_ = true;
    }
    return isRunDescribed_;
}

std::string loggerNote(const MessageFields& message) {
    const LoggerNote head = {LOGGER, 0, reinterpret_cast<std::uintptr_t>(message.loggerName.data())};
    return std::string(bytesOf(head)).append(message.loggerName);
}

std::string placeNote(const KnownPlace& place) {
    const PlaceNote head = {PLACE, place.line, reinterpret_cast<std::uintptr_t>(&place),
                            static_cast<std::uint32_t>(place.level),
                            static_cast<std::uint32_t>(place.file.size())};
    return std::string(bytesOf(head)).append(place.file).append(place.format);
}

// Marks

QueueFileMark QueueFile::appenderMark(std::string_view name) noexcept {
    return markOf(run_, APPENDER_MARK, keyOf(name));
}

QueueFileMark QueueFile::markOf(std::uint32_t run, MarkKind kind, std::uint64_t key) noexcept {
    const ScopedLock lock(lock_);
    return QueueFileMark(findOrAddMark(run, kind, key));
}

/// \return null if there is no room for it
Mark* QueueFile::findOrAddMark(std::uint32_t run, MarkKind kind, std::uint64_t key) noexcept {
    const std::uint64_t word = frameWord(run, kind);
    const auto known = std::find_if(marks_.begin(), marks_.end(), [word, key](const Mark* mark) {
        return mark->word == word && mark->key == key;
    });
    return known != marks_.end() ? *known : addMark(word, key);
}

/// \return null if there is no room for it
Mark* QueueFile::addMark(std::uint64_t word, std::uint64_t key) noexcept {
    if (!isOfThisProcess()) {
        return nullptr;
    }
    if (marksLeft_ == 0) {
        const Memory block = takeSlots(MARKS, 1);
        if (block.bytes == nullptr) {
            return nullptr;
        }
        std::memset(block.bytes, 0, block.size);
        nextMark_ = reinterpret_cast<Mark*>(block.bytes);
        marksLeft_ = block.size / sizeof(Mark);
    }
    Mark& made = *nextMark_++;
    --marksLeft_;
    try {
        marks_.push_back(&made);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    made.key = key;
    made.inverse = ~std::uint64_t{0};
    Mark checked = made;
    checked.word = word;
    made.check = checkOf(checked);
    publish(made.word, word);
    return &made;
}

void QueueFileMark::set(std::uint64_t number) noexcept {
    if (mark_ != nullptr) {
        publish(mark_->number, number);
        publish(mark_->inverse, ~number);
    }
}

// Earlier runs

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
