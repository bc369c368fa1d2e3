#include "inputs/QueueLines.h"

#include "log/LogMessage.h"
#include "log/layout/LineLayout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

namespace ZAV {
namespace Tools {

using namespace Log::QueueFileFormat;

namespace {

/// \return false if it cannot be read; the problem says why
bool readWhole(const Platform::InputFile& file, std::string& bytes, std::string& problem) {
    bytes.resize(static_cast<std::size_t>(file.size()));
    std::size_t size = 0;
    std::int64_t count = 1;
    while (count > 0 && size < bytes.size()) {
        count = file.readAt(size, bytes.data() + size, bytes.size() - size, problem);
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(size);
    return count >= 0;
}

std::uint64_t wordAt(const std::string& bytes, std::size_t place) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + place, std::min(sizeof word, bytes.size() - place));
    return word;
}

/// A consistent view of a file that another process may be writing to. No single read is a snapshot, so the
/// file is read four times. What two consecutive reads agree on is valid; what they disagree on is not
/// damage.
///
/// A block of messages counts if the first read has found it, so that the blocks before it are full in the
/// second one. Its records are those common to the second and the third read; notes about processes are those
/// common to the last two.
class ConsistentReads {
public:
    explicit ConsistentReads(std::array<std::string, 4> looks) : looks_(std::move(looks)) {
        std::size_t size = looks_[0].size();
        for (const std::string& look : looks_) {
            size = std::min(size, look.size());
        }
        for (std::string& look : looks_) {
            look.resize(size);
        }
        for (std::size_t place = SLOT; place < size;) {
            place += keepCommon(place);
        }
    }

    std::string take() { return std::move(looks_[3]); }

private:
    /// \param place the start of a slot that no earlier block covers
    /// \return how many bytes were examined
    std::size_t keepCommon(std::size_t place) {
        const std::uint64_t word = wordAt(looks_[3], place);
        const std::size_t slots = isBlock(word) ? slotsIn(word) : 1;
        const std::size_t end = std::min(place + slots * SLOT, looks_[3].size());
        const bool holdsMessages = isBlock(word) && kindIn(word) == MESSAGES;
        const auto isThere = [word, place](const std::string& look) { return wordAt(look, place) == word; };
        if (!std::all_of(looks_.begin() + (holdsMessages ? 0 : 2), looks_.end(), isThere)) {
            clear(place, end); // it is new, or has replaced another one
        } else if (holdsMessages) {
            looks_[3].replace(place, end - place, looks_[2], place, end - place);
            clearAfterMismatch(looks_[1], place, end);
        } else if (isBlock(word) && kindIn(word) == NOTES) {
            clearAfterMismatch(looks_[2], place, end);
        }
        return end - place;
    }

    /// A record that was incomplete in one of the reads is dropped, with all that follow it.
    void clearAfterMismatch(const std::string& other, std::size_t place, std::size_t end) {
        std::size_t common = place;
        while (common < end && looks_[3][common] == other[common]) {
            ++common;
        }
        if (common < end) {
            clear(common / sizeof(std::uint64_t) * sizeof(std::uint64_t), end);
        }
    }

    void clear(std::size_t begin, std::size_t end) {
        looks_[3].replace(begin, end - begin, end - begin, '\0');
    }

    std::array<std::string, 4> looks_;
};

} // namespace

/// If blocks are reused faster than they are read, even what the reads agree on may be of two times. That is
/// not damage, so a file that changes is read again.
QueueLines::QueueLines(const Platform::InputFile& file) {
    constexpr int MAX_ATTEMPTS = 20;
    int attempts = 0;
    bool isChanging = false;
    do {
        std::array<std::string, 4> looks;
        for (std::string& look : looks) {
            if (!readWhole(file, look, problem)) {
                return;
            }
        }
        isChanging = looks.front() != looks.back();
        show(Log::StoredQueue(ConsistentReads(std::move(looks)).take()));
    } while (isChanging && !problem.empty() && ++attempts < MAX_ATTEMPTS);
}

void QueueLines::show(const Log::StoredQueue& queue) {
    const auto layout = Log::makeLayout(Log::LayoutName::JSON, {}, false);
    text.clear();
    problem = queue.problem();
    for (const Log::StoredQueue::Message& message : queue.messages()) {
        const std::optional<std::string> line = lineOf(message, *layout);
        if (line) {
            text += *line;
        } else if (problem.empty()) {
            problem = "not all messages can be shown for want of memory";
        }
    }
}

std::optional<std::string> lineOf(const Log::StoredQueue::Message& message, const Log::LineLayout& layout) {
    const Log::StoredQueue::Run& run = *message.run;
    const Log::ProcessOverride shown({run.program, run.processId, run.host});
    const std::optional<Log::LogMessage> made = message.make();
    if (!made) {
        return std::nullopt;
    }
    std::string line;
    Log::appendWholeLine(line, Log::MessageFields(*made), layout);
    return line;
}

} // namespace Tools
} // namespace ZAV
