#include "inputs/QueueLines.h"

#include "log/LogMessage.h"
#include "log/layout/LineLayout.h"
#include "log/layout/ProcessDescription.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace ZAV {
namespace Tools {

using namespace Log::QueueFileFormat;

namespace {

/// \return false if it cannot be read, and why
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

/// What a file held that another process may write to. It is read three times, since no look shows it as it
/// was at one moment: what two looks in a row agree on is there, and what they do not agree on is no damage.
/// Messages are those of the first two looks, and what they refer to, which was written before them, that of
/// the last two.
class CommonContent {
public:
    CommonContent(std::string first, std::string second, std::string third)
        : first_(std::move(first)), second_(std::move(second)), bytes_(std::move(third)) {
        const std::size_t size = std::min({first_.size(), second_.size(), bytes_.size()});
        first_.resize(size);
        second_.resize(size);
        bytes_.resize(size);
        for (std::size_t place = SLOT; place < size;) {
            place += keepCommon(place);
        }
    }

    std::string take() { return std::move(bytes_); }

private:
    /// \param place where a slot begins that is in no block before it
    /// \return how many bytes were looked at
    std::size_t keepCommon(std::size_t place) {
        const std::uint64_t word = wordAt(bytes_, place);
        const std::size_t slots = isBlock(word) ? slotsIn(word) : 1;
        const std::size_t end = std::min(place + slots * SLOT, bytes_.size());
        const bool holdsMessages = isBlock(word) && kindIn(word) == MESSAGES;
        if (word != wordAt(second_, place) || (holdsMessages && word != wordAt(first_, place))) {
            clear(place, end); // it came meanwhile, or another one was there
        } else if (holdsMessages) {
            std::copy(second_.begin() + offset(place), second_.begin() + offset(end),
                      bytes_.begin() + offset(place));
            clearBehindCommon(first_, place, end);
        } else if (isBlock(word) && kindIn(word) == NOTES) {
            clearBehindCommon(second_, place, end);
        }
        return end - place;
    }

    /// A record that was not whole yet in one of the looks is none, and no more is one behind it.
    void clearBehindCommon(const std::string& other, std::size_t place, std::size_t end) {
        const auto differing = std::mismatch(bytes_.begin() + offset(place), bytes_.begin() + offset(end),
                                             other.begin() + offset(place));
        const auto common = static_cast<std::size_t>(differing.first - bytes_.begin());
        clear(common / sizeof(std::uint64_t) * sizeof(std::uint64_t), end);
    }

    void clear(std::size_t begin, std::size_t end) {
        std::fill(bytes_.begin() + offset(begin), bytes_.begin() + offset(end), '\0');
    }

    static std::ptrdiff_t offset(std::size_t place) { return static_cast<std::ptrdiff_t>(place); }

    std::string first_;
    std::string second_;
    std::string bytes_;
};

} // namespace

QueueLines::QueueLines(const Platform::InputFile& file) {
    std::string looks[3];
    for (std::string& look : looks) {
        if (!readWhole(file, look, problem)) {
            return;
        }
    }
    CommonContent content(std::move(looks[0]), std::move(looks[1]), std::move(looks[2]));
    const Log::StoredQueue queue(content.take());
    const auto layout = Log::makeLayout(Log::LayoutName::JSON, {}, false);
    for (const Log::StoredQueue::Message& message : queue.messages()) {
        text += lineOf(message, *layout);
    }
    problem = queue.problem();
}

std::string lineOf(const Log::StoredQueue::Message& message, const Log::LineLayout& layout) {
    const Log::StoredQueue::Run& run = *message.run;
    const Log::ShownProcess shown({run.program, run.processId, run.host});
    const Log::LogMessage made = message.fields.makeMessage();
    std::string line;
    Log::appendWholeLine(line, Log::MessageFields(made), layout);
    return line;
}

} // namespace Tools
} // namespace ZAV
