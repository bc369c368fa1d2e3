// What a queue file contains besides messages: notes on what they refer to, and marks of progress.

#include "log/queuefile/QueueFile.h"
#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <cstring>
#include <utility>

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

} // namespace Log
} // namespace ZAV
