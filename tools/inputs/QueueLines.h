#pragma once

#include "log/queuefile/StoredQueue.h"
#include "platform/OpenFiles.h"

#include <optional>
#include <string>
#include <string_view>

namespace ZAV {
namespace Log {
class LineLayout;
}

namespace Tools {

/// \return whether a file that begins so is a queue file
inline bool beginsQueue(std::string_view beginning) {
    return Log::StoredQueue::isOne(beginning);
}

/// The number of bytes that `beginsQueue` needs.
constexpr std::size_t QUEUE_BEGINNING = Log::StoredQueue::BEGINNING;

/// The messages waiting in a queue file, as lines of `json`, which show most of a message.
struct QueueLines {
    /// Reads a file that another process may be using.
    explicit QueueLines(const Platform::InputFile& file);

    std::string text;
    std::string problem; ///< why lines are missing; empty if none are

private:
    void show(const Log::StoredQueue& queue);
};

/// \return the line of a message, with its end, showing the process that logged it; nothing if memory is exhausted
std::optional<std::string> lineOf(const Log::StoredQueue::Message& message, const Log::LineLayout& layout);

} // namespace Tools
} // namespace ZAV
