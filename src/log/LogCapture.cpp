#include "log/LogCapture.h"

#include "log/Appender.h"
#include "log/LogLine.h"
#include "log/tree/LoggerInside.h"
#include "platform/CriticalSection.h"

#include <algorithm>
#include <deque>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Keeps copies of the messages that it is given.
class Recorder : public Appender {
public:
    Recorder() : Appender("ZAV::Log::LogCapture") {}

    std::vector<LogMessage> messages() const {
        const ScopedLock lock(lock_);
        return {messages_.begin(), messages_.end()};
    }

    template <typename Condition>
    std::size_t count(const Condition& condition) const {
        const ScopedLock lock(lock_);
        return static_cast<std::size_t>(std::count_if(messages_.begin(), messages_.end(), condition));
    }

    void clear() {
        const ScopedLock lock(lock_);
        messages_.clear();
    }

private:
    void doOutput(const LogMessage& message) override {
        const ScopedLock lock(lock_);
        messages_.push_back(message);
    }

    mutable Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    std::deque<LogMessage> messages_ ZAV_LOG_GUARDED_BY(lock_);
};

} // namespace

struct LogCapture::Inside {
    Inside(Logger& logger, Level::LogLevel level, bool passesOn)
        : capture(logger, level, passesOn, recorder) {}

    Recorder recorder;
    SubtreeCapture capture; ///< destroyed before its recorder
};

LogCapture::LogCapture(Logger& logger, Level::LogLevel level, bool passesOn)
    : inside_(std::make_unique<Inside>(logger, level, passesOn)) {}

LogCapture::~LogCapture() = default;

std::vector<LogMessage> LogCapture::messages() const {
    return inside_->recorder.messages();
}

std::vector<std::string> LogCapture::lines() const {
    std::vector<std::string> lines;
    for (const LogMessage& message : messages()) {
        lines.push_back(formatLogLine(message));
    }
    return lines;
}

bool LogCapture::contains(const std::string& part) const {
    return inside_->recorder.count([&part](const LogMessage& message) {
        return message.getText().find(part) != std::string::npos;
    }) != 0;
}

std::size_t LogCapture::count(Level::LogLevel level) const {
    return inside_->recorder.count(
        [level](const LogMessage& message) { return message.getLevel() == level; });
}

void LogCapture::clear() {
    inside_->recorder.clear();
}

} // namespace Log
} // namespace ZAV
