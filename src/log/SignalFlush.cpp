#include "log/SignalFlush.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "platform/Threads.h"
#include "zav-util/TimeUtils.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <optional>

namespace ZAV {
namespace Log {

namespace {

std::atomic<bool> isTaken{false};

void flushFor(std::chrono::milliseconds timeout) noexcept {
    const auto milliseconds = static_cast<std::uint64_t>(std::max<std::int64_t>(timeout.count(), 1));
    try {
        LogManager::flush(Util::TimeUtils::Time(milliseconds, Util::TimeUtils::MSEC));
    } catch (const std::exception&) {
        return; // it cannot be reported here
    }
}

} // namespace

struct SignalFlush::Inside {
    Inside(const std::vector<int>& signals, std::chrono::milliseconds timeout) {
        if (isTaken.exchange(true)) {
            throw LogException("There is a SignalFlush already.");
        }
        try {
            hook.emplace(signals, flushFor, timeout);
        } catch (const std::exception& exception) {
            isTaken = false;
            throw LogException(std::string("No handler can be set: ") + exception.what());
        }
    }

    ~Inside() {
        hook.reset();
        isTaken = false;
    }

    std::optional<Platform::SignalHook> hook;
};

SignalFlush::SignalFlush(const std::vector<int>& signals, std::chrono::milliseconds timeout)
    : inside_(std::make_unique<Inside>(signals, timeout)) {}

SignalFlush::~SignalFlush() = default;

} // namespace Log
} // namespace ZAV
