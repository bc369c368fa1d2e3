#include "log/tree/TreeChange.h"

#include "log/config/ConfigurationKeys.h"
#include "log/config/LoggerKeys.h"
#include "log/filters/TemporaryLevels.h"
#include "platform/Threads.h"
#include "zav-util/FileUtils.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;
using namespace Util::TimeUtils;

TreeChange::TreeChange(Logger& root, const Util::Properties& properties) : root_(root) {
    forEachLoggerKey(properties, [&](const LoggerKey& key) {
        const bool isRoot = key.loggerName == "root";
        const std::string path = Util::FileUtils::baseName(key.loggerName);
        checkName(path);
        settings_.push_back({path, isRoot, key.attribute, LoggerValue()});
        settings_.back().value = readLoggerValue(key, properties);
    });
}

void TreeChange::makeLoggers() {
    std::vector<bool> existed;
    for (const Setting& setting : settings_) {
        existed.push_back(setting.isRoot || root_.findLogger(setting.path) != nullptr);
    }
    for (std::size_t position = 0; position < settings_.size(); ++position) {
        const Setting& setting = settings_[position];
        OwnSettings& own = own_[setting.isRoot ? &root_ : &root_.getLogger(setting.path)];
        if (setting.attribute == LoggerAttribute::LEVEL) {
            own.level = ownSetting(setting.value.level, existed[position], position);
        } else if (setting.attribute == LoggerAttribute::EXPIRATION) {
            own.expiration = ownSetting(setting.value.expiration, existed[position], position);
        }
    }
    forgetOverruled();
}

/// A logger that did not exist before has no previous setting to keep.
template <typename Value>
TreeChange::Own<Value> TreeChange::ownSetting(const std::optional<Value>& value, bool hasLogger,
                                              std::size_t position) {
    return {value || hasLogger, !value, value.value_or(Value{}), position};
}

void TreeChange::forgetOverruled() {
    for (auto& [logger, own] : own_) {
        own.level.isGiven = own.level.isGiven && !isOverruled(*logger, &OwnSettings::level);
        own.expiration.isGiven = own.expiration.isGiven && !isOverruled(*logger, &OwnSettings::expiration);
    }
}

/// \return whether a later key sets the same attribute for an ancestor, and so for this logger
template <typename Value>
bool TreeChange::isOverruled(const Logger& logger, Own<Value> OwnSettings::*own) const {
    const std::size_t position = (own_.at(&logger).*own).position;
    for (const Logger* above = logger.inside_->parent_; above != nullptr; above = above->inside_->parent_) {
        const auto found = own_.find(above);
        if (found != own_.end() && (found->second.*own).isGiven && (found->second.*own).position > position) {
            return true;
        }
    }
    return false;
}

void TreeChange::awaitMessages() const {
    root_.inside_->waitForSubtree();
}

bool TreeChange::awaitMessages(std::chrono::steady_clock::time_point end) const {
    return root_.inside_->waitForSubtree(end);
}

void TreeChange::apply(const std::vector<Appender*>& before, const std::vector<Appender*>& after) {
    std::vector<Appender*> sortedBefore(before);
    std::sort(sortedBefore.begin(), sortedBefore.end());
    const ScopedLock lock(treeLock());
    std::vector<AppenderList::Entries> lists(root_.inside_->countSubtree(),
                                             AppenderList::Entries(after.begin(), after.end()));
    auto list = lists.begin();
    const Time now = Time::now();
    root_.inside_->forSubtree([&](Logger& logger) ZAV_LOG_REQUIRES(treeLock()) {
        configure(logger, now);
        logger.inside_->appenders_.exchange(sortedBefore, *list++);
    });
    endOfTemporary_ = TemporaryLevels::instance().lowestAt(now) ? now : Time();
    TemporaryLevels::instance().endWhere([](const Logger*) { return true; }, now);
}

/// Gives up after 2 ms: the clock has millisecond resolution, and may stand still.
void TreeChange::awaitLaterTime() const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
    while (endOfTemporary_ != Time() && Time::now() <= endOfTemporary_ &&
           std::chrono::steady_clock::now() < end) {
        if (!Platform::sleepBriefly()) {
            std::this_thread::yield();
        }
    }
}

/// Parents are configured before their children, which inherit the parent's settings unless a key says
/// otherwise. A level that is kept also keeps the time from which its expiration counts.
void TreeChange::configure(Logger& logger, Time now) const {
    Logger::Inside& inside = *logger.inside_;
    const Logger::Inside* const parent = inside.parent_ == nullptr ? nullptr : inside.parent_->inside_.get();
    const auto found = own_.find(&logger);
    const OwnSettings own = found == own_.end() ? OwnSettings() : found->second;

    Level::LogLevel level = parent == nullptr ? Level::LEVEL_WARNING : parent->lastingLevel_.load();
    std::uint64_t setTime = parent == nullptr ? now.microseconds() : parent->levelSetTime_.load();
    std::uint64_t expiration = parent == nullptr ? 0 : parent->expirationTime_.load();
    if (own.level.isGiven) {
        level = own.level.staysAsItIs ? inside.lastingLevel_.load() : own.level.value;
        setTime = own.level.staysAsItIs ? inside.levelSetTime_.load() : now.microseconds();
    }
    if (own.expiration.isGiven && own.expiration.staysAsItIs) {
        expiration = inside.expirationTime_;
    } else if (own.expiration.isGiven) {
        expiration = own.expiration.value.microseconds();
    }
    inside.expirationTime_.store(expiration, std::memory_order_relaxed);
    inside.setLevel(level, now);
    inside.levelSetTime_.store(setTime, std::memory_order_relaxed);
}

} // namespace Log
} // namespace ZAV
