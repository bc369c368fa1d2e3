#include "log/config/DispatcherSettings.h"

#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"
#include "platform/Files.h"
#include "platform/Threads.h"
#include "zav-util/Conversions.h"
#include "zav-util/Properties.h"
#include "zav-util/StandardError.h"
#include "zav-util/UtilException.h"

#include <optional>
#include <string>

namespace ZAV {
namespace Log {

namespace {

/// Middle of the configured scale; a lower number means the lowest priority, a higher one the highest.
constexpr std::int32_t NORMAL_PRIORITY = 25;

/// \return empty if there is no such key, or if its value is invalid, which is reported
template <typename Read>
auto readOption(const Util::Properties& properties, const std::string& option, Read read)
    -> std::optional<decltype(read(std::string()))> {
    const std::string key = dispatcherKey(option);
    std::string value;
    if (!properties.getProperty(key, value)) {
        return std::nullopt;
    }
    try {
        return read(value);
    } catch (const Util::UtilException& exception) {
        Util::writeErrorLine("AsynchronousDispatcher::configure failure for option " + key +
                             ". Exception: " + exception.what());
        return std::nullopt;
    }
}

std::optional<std::int32_t> readInteger(const Util::Properties& properties, const std::string& option) {
    return readOption(properties, option, [](const std::string& value) { return Util::toInteger(value); });
}

/// \throw UtilException
std::uint64_t toFileSize(const std::string& value) {
    const std::uint64_t bytes = readSizeLimit(value).value_or(0);
    if (bytes == 0) {
        throw Util::UtilException("Can't convert " + value + " to a size");
    }
    return bytes;
}

Util::TimeUtils::Time toWaitingPeriod(std::int32_t seconds) {
    const std::uint64_t count = seconds < 0 ? 0 : static_cast<std::uint64_t>(seconds);
    return Util::TimeUtils::Time(count, Util::TimeUtils::SEC);
}

int toThreadPriority(std::int32_t number) {
    if (number == NORMAL_PRIORITY) {
        return Platform::THREAD_PRIORITY_NORMAL_VALUE;
    }
    return number < NORMAL_PRIORITY ? Platform::THREAD_PRIORITY_LOWEST_VALUE
                                    : Platform::THREAD_PRIORITY_HIGHEST_VALUE;
}

} // namespace

void DispatcherSettings::read(const Util::Properties& properties) {
    if (const auto number = readInteger(properties, DispatcherOption::MAX_QUEUE_SIZE)) {
        maxQueueSize = static_cast<std::uint64_t>(std::int64_t{*number});
    }
    if (const auto number = readInteger(properties, DispatcherOption::WAITING_PERIOD)) {
        waitingPeriod = toWaitingPeriod(*number);
    }
    if (const auto number = readInteger(properties, DispatcherOption::PRIORITY)) {
        priority = toThreadPriority(*number);
    }
    std::string overflow;
    if (properties.getProperty(dispatcherKey(DispatcherOption::OVERFLOW_RULE), overflow)) {
        overflowBlocks = overflow == "block";
    }
}

void QueueFileSettings::read(const Util::Properties& properties) {
    name.clear();
    properties.getProperty(dispatcherKey(DispatcherOption::QUEUE_FILE), name);
    path = Platform::absolutePath(name);
    if (properties.count(dispatcherKey(DispatcherOption::QUEUE_FILE_SIZE)) != 0) {
        size = readOption(properties, DispatcherOption::QUEUE_FILE_SIZE, toFileSize).value_or(size);
    }
}

QueueFileSettings QueueFileSettings::renewedBy(const Util::Properties& properties) const {
    QueueFileSettings renewed;
    if (properties.count(dispatcherKey(DispatcherOption::QUEUE_FILE_SIZE)) != 0) {
        renewed.size = size;
    }
    renewed.read(properties);
    return renewed;
}

DispatcherSettings DispatcherSettings::renewedBy(const Util::Properties& properties) const {
    const auto isNamed = [&properties](const char* option) {
        return properties.count(dispatcherKey(option)) != 0;
    };
    DispatcherSettings renewed;
    if (isNamed(DispatcherOption::MAX_QUEUE_SIZE)) {
        renewed.maxQueueSize = maxQueueSize;
    }
    if (isNamed(DispatcherOption::WAITING_PERIOD)) {
        renewed.waitingPeriod = waitingPeriod;
    }
    if (isNamed(DispatcherOption::PRIORITY)) {
        renewed.priority = priority;
    }
    renewed.read(properties);
    return renewed;
}

} // namespace Log
} // namespace ZAV
