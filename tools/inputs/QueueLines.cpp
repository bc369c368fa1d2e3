#include "inputs/QueueLines.h"

#include "log/LogMessage.h"
#include "log/layout/LineLayout.h"
#include "log/layout/ProcessDescription.h"

#include <memory>

namespace ZAV {
namespace Tools {

namespace {

constexpr int MOST_LOOKS = 10;

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

} // namespace

QueueLines::QueueLines(const Platform::InputFile& file) {
    const auto layout = Log::makeLayout(Log::LayoutName::JSON, {}, false);
    std::string bytes;
    for (int look = 0; look == 0 || (look < MOST_LOOKS && !problem.empty()); ++look) {
        text.clear();
        problem.clear();
        if (!readWhole(file, bytes, problem)) {
            return;
        }
        const Log::StoredQueue queue(bytes);
        for (const Log::StoredQueue::Message& message : queue.messages()) {
            text += lineOf(message, *layout);
        }
        problem = queue.problem();
    }
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
