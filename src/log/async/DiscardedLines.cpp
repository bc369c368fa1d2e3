#include "log/async/DiscardedLines.h"

#include "log/layout/UndeliveredMessage.h"
#include "log/reentrancy/LibraryCall.h"

#include <exception>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

constexpr std::size_t MAX_WAITING_BYTES = std::size_t{1024} * 1024;

/// Whatever reads standard error may log what is written, and so discard the next message, and so on. A
/// message at this depth is only counted, to end such a chain.
constexpr int DEEPEST = 8;

/// How long the end of the process waits for one line to be written.
constexpr std::chrono::seconds LONGEST_WRITE{2};

} // namespace

void DiscardedLines::waitForRoom() {
    if (waitingBytes() >= MAX_WAITING_BYTES && threadRecord().writtenLines == 0) {
        waitPoint_.wait(Deadline(), [this] { return waitingBytes() < MAX_WAITING_BYTES; });
    }
}

std::size_t DiscardedLines::waitingBytes() noexcept {
    const ScopedLock lock(lock_);
    return bytes_;
}

void DiscardedLines::add(std::string line, const char* reason) noexcept {
    const int depth = threadRecord().writtenLines;
    if (depth >= DEEPEST) {
        return;
    }
    const ScopedLock lock(lock_);
    try {
        lines_.push_back({std::string(), reason, depth});
        lines_.back().text.swap(line);
        bytes_ += lines_.back().text.size();
    } catch (const std::exception&) {
        ++withoutMemory_;
        theirReason_ = reason;
    }
}

/// A line discarded while another is being written, by whatever reads standard error, is written after it.
void DiscardedLines::write() {
    int& depth = threadRecord().writtenLines;
    if (depth > 0 || !begin()) {
        return;
    }
    Line line{};
    while (takeNext(line)) {
        waitPoint_.notifyAll(); // there is room again
        depth = line.depth + 1;
        showLine(line.text, line.reason);
        depth = 0;
    }
    waitPoint_.notifyAll();
}

/// \return false if another thread is writing
bool DiscardedLines::begin() noexcept {
    const ScopedLock lock(lock_);
    return !std::exchange(isWriting_, true);
}

/// \return false if no line is left; writing has then ended
bool DiscardedLines::takeNext(Line& line) noexcept {
    const ScopedLock lock(lock_);
    if (!lines_.empty()) {
        line = std::move(lines_.front());
        lines_.pop_front();
        bytes_ -= line.text.size();
    } else if (withoutMemory_ > 0) {
        --withoutMemory_;
        line = {std::string(), theirReason_, 0};
    } else {
        isWriting_ = false;
        return false;
    }
    ++taken_;
    return true;
}

void DiscardedLines::finish() {
    write();
    bool goesOn = true;
    for (std::uint64_t before = 0; goesOn;) {
        const auto hasChanged = [this, &before] {
            const ScopedLock lock(lock_);
            const bool isChanged = !isWriting_ || taken_ != before;
            before = taken_;
            return isChanged;
        };
        goesOn = waitPoint_.wait(Deadline(LONGEST_WRITE), hasChanged) && [this] {
            const ScopedLock lock(lock_);
            return isWriting_;
        }();
    }
}

void DiscardedLines::renewInChild() noexcept {
    waitPoint_.renewInChild();
    const ScopedLock lock(lock_);
    lines_.clear();
    bytes_ = 0;
    withoutMemory_ = 0;
    isWriting_ = threadRecord().writtenLines > 0;
}

} // namespace Log
} // namespace ZAV
