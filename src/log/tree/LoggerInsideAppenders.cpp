// The appenders of a logger: changes of the list, and the delivery of a message to those listed.

#include "log/tree/LoggerInside.h"

#include "log/Appender.h"
#include "log/message/MessageFields.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <algorithm>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

void AppenderList::takeOne(Entries& entries) {
    appenders_.splice(appenders_.end(), entries, entries.begin());
    ++version_;
}

void AppenderList::remove(Appender* appender) {
    appenders_.remove(appender);
    ++version_;
}

void AppenderList::exchange(const std::vector<Appender*>& before, Entries& after) {
    for (auto entry = appenders_.begin(); entry != appenders_.end();) {
        if (!std::binary_search(before.begin(), before.end(), *entry)) {
            ++entry;
            continue;
        }
        appenders_.splice(entry, after);
        entry = appenders_.erase(entry);
    }
    appenders_.splice(appenders_.end(), after);
    ++version_;
}

void AppenderList::setMuted(bool isMuted) {
    isMuted_ = isMuted;
    ++version_;
}

void AppenderList::copyFrom(const AppenderList& other) {
    appenders_ = other.appenders_;
    isMuted_ = other.isMuted_;
    ++version_;
}

AppenderList::Outcome AppenderList::deliverToSynchronous(ReusedMessage& message, bool isOutermost) {
    const bool hasChanged = copiedVersion_ != version_.load(std::memory_order_acquire);
    if (hasChanged && !isOutermost) {
        std::uint64_t version = 0;
        const Copy copy = makeCopy(version);
        return give(copy, version, message);
    }
    if (hasChanged) {
        renewCopy();
    }
    if (areAsynchronous()) {
        return {true, nullptr};
    }
    return give(copy_, copiedVersion_, message);
}

void AppenderList::renewCopy() {
    const ScopedLock lock(treeLock());
    copyInto(copy_);
    copiedVersion_ = version_;
    const bool areAsynchronous = std::none_of(
        copy_.begin(), copy_.end(), [](const Appender* appender) { return appender->isSynchronous(); });
    areAsynchronous_.store(areAsynchronous && !copy_.empty(), std::memory_order_relaxed);
}

AppenderList::Copy AppenderList::makeCopy(std::uint64_t& version) const {
    const ScopedLock lock(treeLock());
    version = version_;
    Copy copy;
    copyInto(copy);
    return copy;
}

void AppenderList::copyInto(Copy& copy) const {
    copy.assign(appenders_.begin(), appenders_.end());
    if (isMuted_) {
        const auto isNoRecorder = [](const Appender* appender) ZAV_LOG_REQUIRES(treeLock()) {
            return !SubtreeCapture::isRecorder(appender);
        };
        copy.erase(std::remove_if(copy.begin(), copy.end(), isNoRecorder), copy.end());
    }
}

/// If an appender forks, the dispatch ends in the child: the parent delivers the message to the remaining
/// appenders, and the child would duplicate it.
AppenderList::Outcome AppenderList::give(const Copy& copy, std::uint64_t version,
                                         ReusedMessage& message) const {
    Outcome outcome;
    for (Appender* const appender : copy) {
        if (!isStillListed(appender, version)) {
            continue;
        }
        if (!appender->isSynchronous()) {
            outcome.hasAsynchronous = true;
            continue;
        }
        const LogMessage& made = message.get();
        const unsigned generation = Platform::forkGeneration();
        try {
            appender->output(made);
        } catch (const Platform::ForcedUnwind&) {
            throw; // the thread is being cancelled
        } catch (...) {
            if (!outcome.exception) {
                outcome.exception = std::current_exception();
            }
        }
        if (Platform::forkGeneration() != generation) {
            outcome.hasAsynchronous = false;
            break;
        }
    }
    return outcome;
}

/// \param version of the list when the entry was copied
bool AppenderList::isStillListed(Appender* appender, std::uint64_t version) const {
    if (version == version_.load(std::memory_order_acquire)) {
        return true;
    }
    const ScopedLock lock(treeLock());
    return contains(appender);
}

bool AppenderList::contains(const Appender* appender) const {
    return std::find(appenders_.begin(), appenders_.end(), appender) != appenders_.end();
}

} // namespace Log
} // namespace ZAV
