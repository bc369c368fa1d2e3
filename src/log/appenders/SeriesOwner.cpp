#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
#include "platform/ForkedMemory.h"
#include "platform/Process.h"

#include <atomic>
#include <map>
#include <new>

namespace ZAV {
namespace Log {

/// What the processes that were forked from the one that made the series have in common. They take no lock
/// for it, since one of them may be killed at any moment.
struct SeriesOwner::Common {
    std::atomic<int> processId{Platform::processId()}; ///< of the process that rotates
    std::atomic<unsigned> rotations{0};
    std::atomic<bool> isShared{false}; ///< whether a process that may not rotate has written

    static_assert(std::atomic<int>::is_always_lock_free && std::atomic<unsigned>::is_always_lock_free &&
                      std::atomic<bool>::is_always_lock_free,
                  "a lock would be in the memory of one process");
};

struct SeriesOwner::Series {
    explicit Series(const std::string& path) : livePath(path) {}

    const std::string livePath;
    const Platform::ForkedMemory memory{sizeof(Common)};
    Common& common = *new (memory.get()) Common;
    int users = 0; ///< objects of this class, guarded by the table's lock
};

struct SeriesOwner::Table {
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::map<std::string, Series> series ZAV_LOG_GUARDED_BY(lock);

    Series& enter(const std::string& livePath) {
        const Platform::ScopedLock scope(lock);
        Series& entered = series.try_emplace(livePath, livePath).first->second;
        ++entered.users;
        return entered;
    }

    /// A series that another process rotates stays in the table of a forked child.
    void leave(Series& left) {
        const Platform::ScopedLock scope(lock);
        --left.users;
        if (left.users == 0 && left.common.processId == Platform::processId()) {
            series.erase(series.find(left.livePath));
        }
    }
};

/// Never destroyed, since threads may still log while the process ends.
SeriesOwner::Table& SeriesOwner::table() {
    static Table& table = *new Table;
    return table;
}

/// So that no thread makes it while another one forks.
const SeriesOwner::Table& SeriesOwner::madeAtLoad = table();

SeriesOwner::SeriesOwner(const std::string& livePath)
    : series_(table().enter(livePath)), rotationsSeen_(series_.common.rotations) {}

SeriesOwner::~SeriesOwner() {
    table().leave(series_);
}

/// Whoever takes over a series that has begun finds a live file that others have written.
bool SeriesOwner::mayRotate() {
    Common& common = series_.common;
    const int self = Platform::processId();
    int rotating = common.processId;
    if (rotating == self) {
        return true;
    }
    if (Platform::isProcessAlive(rotating) || !common.processId.compare_exchange_strong(rotating, self)) {
        return false;
    }
    if (common.rotations != 0) {
        common.isShared = true;
    }
    return true;
}

bool SeriesOwner::isShared() const {
    return series_.common.isShared;
}

void SeriesOwner::noteRotation() {
    rotationsSeen_ = ++series_.common.rotations;
}

void SeriesOwner::follow() {
    series_.common.isShared = true;
    rotationsSeen_ = series_.common.rotations;
}

/// Two appenders of the process that rotates do not follow each other.
bool SeriesOwner::isBehind() const {
    return series_.common.rotations != rotationsSeen_ &&
           series_.common.processId != Platform::rememberedProcessId();
}

} // namespace Log
} // namespace ZAV
