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

/// \return whether a file with that beginning is one that keeps a program's queue
inline bool beginsQueue(std::string_view beginning) {
    return Log::StoredQueue::isOne(beginning);
}

/// How many bytes that takes.
constexpr std::size_t QUEUE_BEGINNING = Log::StoredQueue::BEGINNING;

/// What waits in a queue file, as lines of `json`, which say most of a message.
struct QueueLines {
    /// Reads a file that another process may be using.
    explicit QueueLines(const Platform::InputFile& file);

    std::string text;
    std::string problem; ///< why lines are missing; empty if none are
};

/// \return the line of a message, with its end, for the process that logged it; nothing if there is no memory
std::optional<std::string> lineOf(const Log::StoredQueue::Message& message, const Log::LineLayout& layout);

} // namespace Tools
} // namespace ZAV
