#include "log/queuefile/Recovery.h"

#include "log/Appender.h"
#include "log/LogMessage.h"
#include "log/async/BatchAppender.h"
#include "log/layout/ProcessDescription.h"
#include "log/message/FailureCount.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/StoredQueue.h"
#include "zav-util/StandardError.h"

#include <exception>
#include <map>
#include <utility>

namespace ZAV {
namespace Log {

namespace {

/// \return whether the appender has written it, as far as it says
bool give(Appender& appender, const LogMessage& message) noexcept {
    const std::uint64_t failuresBefore = FailureCount::get();
    try {
        appender.output(message);
    } catch (const std::exception& exception) {
        Util::writeErrorLine("LogManager::init: uncaught exception: ", exception.what());
    } catch (...) {
        Util::writeErrorLine("LogManager::init: uncaught exception: ", "unknown exception");
    }
    return FailureCount::get() == failuresBefore;
}

/// An appender that messages are recovered to.
class Recovered {
public:
    Recovered(Appender& appender, QueueFile* file) : appender_(appender), file_(file) {}

    /// \return whether it was given
    bool give(const StoredQueue::Message& stored, const LogMessage& message, bool stopsAtFailure) {
        if (hasStopped_ || !stored.isWaitingFor(appender_.getName())) {
            return false;
        }
        if (auto* const lines = dynamic_cast<BatchAppender*>(&appender_); lines != nullptr && !hasBegun_) {
            lines->endTornLine();
        }
        hasBegun_ = true;
        const bool isWritten = Log::give(appender_, message);
        failures_ += isWritten ? 0 : 1;
        hasStopped_ = !isWritten && stopsAtFailure;
        if (!hasStopped_) {
            markOf(stored.run->id).set(stored.number);
        }
        return true;
    }

    std::uint64_t failures() const noexcept { return failures_; }

private:
    QueueFileMark& markOf(std::uint32_t run) {
        const auto [mark, isNew] = marks_.try_emplace(run);
        if (isNew && file_ != nullptr) {
            mark->second = file_->earlierMark(run, appender_.getName());
        }
        return mark->second;
    }

    Appender& appender_;
    QueueFile* const file_;
    std::map<std::uint32_t, QueueFileMark> marks_;
    std::uint64_t failures_ = 0;
    bool hasBegun_ = false;
    bool hasStopped_ = false;
};

} // namespace

Recovery recover(const StoredQueue& stored, const std::vector<Appender*>& appenders, QueueFile* file,
                 bool stopsAtFailure) {
    std::vector<Recovered> recovered;
    recovered.reserve(appenders.size());
    for (Appender* const appender : appenders) {
        recovered.emplace_back(*appender, file);
    }
    Recovery recovery;
    recovery.hasAppenders = !appenders.empty();
    for (const StoredQueue::Message& message : stored.messages()) {
        const StoredQueue::Run& run = *message.run;
        const ShownProcess shown({run.program, run.processId, run.host});
        const LogMessage made = message.fields.makeMessage();
        bool isGiven = false;
        for (Recovered& appender : recovered) {
            isGiven = appender.give(message, made, stopsAtFailure) || isGiven;
        }
        recovery.messages += isGiven ? 1 : 0;
    }
    for (const Recovered& appender : recovered) {
        recovery.failures += appender.failures();
    }
    return recovery;
}

} // namespace Log
} // namespace ZAV
