#include "log/lifecycle/Reload.h"

#include "log/Appender.h"
#include "log/LoggerFactory.h"
#include "log/appenders/BatchAppender.h"
#include "log/async/AsynchronousDispatcher.h"
#include "log/tree/LoggerInside.h"
#include "platform/Threads.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

namespace ZAV {
namespace Log {

namespace {

/// How long logging calls are blocked for the change before it is retried because some appender is slow.
constexpr std::chrono::milliseconds MIN_BLOCK_TIME{20};
constexpr std::chrono::milliseconds MAX_BLOCK_TIME{5000};

/// How long they are blocked at most to drain the queue, which is also drained before that, without blocking.
constexpr std::chrono::milliseconds MAX_DRAIN_TIME{100};

AsynchronousDispatcher& dispatcher() {
    return AsynchronousDispatcher::instance();
}

std::vector<Appender*> asynchronousOf(const std::vector<Appender*>& appenders) {
    std::vector<Appender*> asynchronous;
    std::copy_if(appenders.begin(), appenders.end(), std::back_inserter(asynchronous),
                 [](const Appender* appender) { return !appender->isSynchronous(); });
    return asynchronous;
}

/// \return the names of the files that the appenders of one kind write to, "" for one whose name is unknown.
///         Directories are not compared: it is hard to tell whether two paths lead to different ones
std::set<std::string> filesOf(const std::vector<Appender*>& appenders, bool synchronous) {
    std::set<std::string> names;
    for (const Appender* const appender : appenders) {
        const auto* const files = dynamic_cast<const BatchAppender*>(appender);
        if (files != nullptr && files->isSynchronous() == synchronous) {
            names.insert(files->fileName());
        }
    }
    return names;
}

} // namespace

Reload::Reload(const Util::Properties& properties)
    : tree_(LoggerFactory::getRootLogger(), properties),
      appenders_(AppenderRegistry::instance().prepareExchange(properties)),
      settings_(dispatcher().settingsBy(properties)),
      needsNewConsumer_(settings_.priority != dispatcher().settings().priority),
      concernsConsumer_(concernsConsumer()), mustDrain_(reusesFiles()) {}

/// \return whether a synchronous appender may write to the file of an asynchronous one, for which messages
///         may still be queued
bool Reload::reusesFiles() const {
    const std::set<std::string> heirs = filesOf(appenders_.coming, true);
    const std::set<std::string> left = filesOf(appenders_.leaving, false);
    if (heirs.empty() || left.empty()) {
        return false;
    }
    return heirs.count(std::string()) + left.count(std::string()) != 0 ||
           std::any_of(left.begin(), left.end(),
                       [&heirs](const std::string& name) { return heirs.count(name) != 0; });
}

bool Reload::concernsConsumer() const {
    const Appenders after = asynchronousOf(appenders_.after);
    return needsNewConsumer_ || asynchronousOf(appenders_.before) != after ||
           std::any_of(after.begin(), after.end(),
                       [](const Appender* appender) { return AppenderRegistry::hasLoweredLevel(*appender); });
}

void Reload::run() {
    const Platform::NoCancellation noCancellation; // it must not be left half done
    tree_.makeLoggers();
    dispatcher().prepareExchange(asynchronousOf(appenders_.after));
    changePlaces();
    if (concernsConsumer_) {
        changeConsumer();
    }
    AppenderRegistry::cleanUpOldFiles(
        appenders_.coming); // before others are destroyed, so that packing goes on
    appenders_.created.clear();
}

/// Waits for busy appenders while logging continues. Then it blocks new logging calls until those in progress
/// are done; if that exceeds the limit, logging continues and it starts again. The limit grows with each
/// attempt, for appenders that are always slow.
void Reload::changePlaces() {
    bool hasChanged = false;
    for (std::chrono::milliseconds standstill = MIN_BLOCK_TIME; !hasChanged;
         standstill = std::min(2 * standstill, MAX_BLOCK_TIME)) {
        awaitAppenders();
        const DispatchGate::Closed gate;
        if (awaitAppenders(standstill)) {
            changeAtOnce();
            hasChanged = true;
        }
    }
}

void Reload::awaitAppenders() const {
    tree_.awaitMessages();
    if (mustDrain_) {
        dispatcher().drain(Deadline());
    }
}

bool Reload::awaitAppenders(std::chrono::milliseconds limit) const {
    const Deadline deadline(std::min(limit, MAX_DRAIN_TIME));
    return tree_.awaitMessages(std::chrono::steady_clock::now() + limit) &&
           (!mustDrain_ || dispatcher().drain(deadline));
}

/// Called with the gate closed. A forked child sees all of it or nothing, except for what `changeConsumer`
/// does.
void Reload::changeAtOnce() {
    try {
        AppenderRegistry::instance().exchange(appenders_, [this] {
            if (concernsConsumer_) {
                dispatcher().hold();
            }
            tree_.apply(appenders_.before, appenders_.after);
        });
    } catch (...) {
        dispatcher().endHold();
        throw;
    }
    dispatcher().use(settings_);
    closeFiles(true);
    restoreLevels(true);
    if (mustDrain_) {
        closeFiles(false);
    }
    tree_.awaitLaterTime();
}

/// The change follows the delivery of what was queued before, to which the old levels apply.
void Reload::changeConsumer() {
    dispatcher().awaitHold();
    dispatcher().exchangeConfigured(needsNewConsumer_);
    closeFiles(false);
    restoreLevels(false);
    dispatcher().endHold();
}

void Reload::closeFiles(bool synchronous) const {
    for (Appender* const appender : appenders_.leaving) {
        auto* const files = dynamic_cast<BatchAppender*>(appender);
        if (files != nullptr && files->isSynchronous() == synchronous) {
            files->close();
        }
    }
}

void Reload::restoreLevels(bool synchronous) const {
    for (const Appender* const appender : appenders_.staying) {
        if (appender->isSynchronous() == synchronous) {
            AppenderRegistry::restoreLevel(*appender);
        }
    }
}

} // namespace Log
} // namespace ZAV
