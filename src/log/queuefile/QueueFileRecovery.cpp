// Delivering what earlier processes have left in a queue file.

#include "log/Appender.h"
#include "log/LogMessage.h"
#include "log/commands/FailureReport.h"
#include "log/layout/LineLayout.h"
#include "log/queuefile/QueueFile.h"
#include "log/queuefile/QueueFileChecks.h"
#include "log/queuefile/StoredQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "zav-util/StandardError.h"

#include <algorithm>
#include <exception>
#include <map>
#include <optional>

namespace ZAV {
namespace Log {

namespace {

/// \return whether the appender has written it, as far as is known
bool give(Appender& appender, const LogMessage& message) noexcept {
    const std::uint64_t failedBefore = threadRecord().failedWrites;
    try {
        appender.output(message);
    } catch (const std::exception& exception) {
        Util::writeErrorLine("LogManager::init: uncaught exception: ", exception.what());
    } catch (...) {
        Util::writeErrorLine("LogManager::init: uncaught exception: ", "unknown exception");
    }
    return threadRecord().failedWrites == failedBefore;
}

/// An appender that gets recovered messages. If any appender forks, recovery stops in the child: the parent
/// delivers the messages.
class Recovered {
public:
    Recovered(Appender& appender, QueueFile& file)
        : appender_(appender), file_(file), key_(QueueFileFormat::keyOf(appender.getName())),
          generation_(Platform::forkGeneration()) {}

    bool isWaitingFor(const StoredQueue::Message& stored) const {
        const auto given = stored.run->appenders.find(key_);
        return mayGoOn() && (given == stored.run->appenders.end() || stored.number > given->second);
    }

    /// \param message null if there was no memory for it; it is then skipped for good
    /// \return whether the appender has written it
    bool give(const StoredQueue::Message& stored, const LogMessage* message) {
        hasFailed_ = message != nullptr && !Log::give(appender_, *message);
        if (mayGoOn()) {
            stored.run->appenders[key_] = stored.number; // for a later `init` in this process
            markOf(stored.run->id).set(stored.number);
        }
        return message != nullptr && !hasFailed_;
    }

    bool hasFailed() const noexcept { return hasFailed_; }
    const std::string& name() const noexcept { return appender_.getName(); }

private:
    bool mayGoOn() const noexcept { return !hasFailed_ && generation_ == Platform::forkGeneration(); }

    QueueFileMark& markOf(std::uint32_t run) {
        const auto [mark, isNew] = marks_.try_emplace(run);
        if (isNew) {
            mark->second = file_.earlierMark(run, appender_.getName());
        }
        return mark->second;
    }

    Appender& appender_;
    QueueFile& file_;
    const std::uint64_t key_;   ///< of the appender's marks
    const unsigned generation_; ///< detects a forked child
    std::map<std::uint32_t, QueueFileMark> marks_;
    bool hasFailed_ = false;
};

/// A message counts once, no matter which appenders write it, or when.
void giveToAll(StoredQueue::Message& stored, std::vector<Recovered>& appenders, Recovery& recovery) {
    const auto isWaiting = [&stored](const Recovered& appender) { return appender.isWaitingFor(stored); };
    if (std::none_of(appenders.begin(), appenders.end(), isWaiting)) {
        return;
    }
    const StoredQueue::Run& run = *stored.run;
    const ProcessOverride shown({run.program, run.processId, run.host});
    const std::optional<LogMessage> message = stored.make();
    if (!message) {
        FailureCount::add(); // there is no message to report
        ++recovery.lost;
    }
    const bool wasRecovered = stored.isRecovered;
    for (Recovered& appender : appenders) {
        if (appender.isWaitingFor(stored)) {
            const bool isWritten = appender.give(stored, message ? &*message : nullptr);
            stored.isRecovered = stored.isRecovered || isWritten;
        }
    }
    recovery.messages += stored.isRecovered && !wasRecovered ? 1 : 0;
}

} // namespace

Recovery recover(QueueFile& file, const std::vector<Appender*>& appenders) {
    std::vector<Recovered> recovered;
    recovered.reserve(appenders.size());
    for (Appender* const appender : appenders) {
        recovered.emplace_back(*appender, file);
    }
    Recovery recovery;
    recovery.hasAppenders = !appenders.empty();
    for (StoredQueue::Message& message : file.earlier()->messages()) {
        giveToAll(message, recovered, recovery);
    }
    for (const Recovered& appender : recovered) {
        if (appender.hasFailed()) {
            recovery.failed.push_back(appender.name());
        }
    }
    return recovery;
}

} // namespace Log
} // namespace ZAV
