#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
#include "platform/Fork.h"
#include "platform/ForkedMemory.h"
#include "platform/Process.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <new>

namespace ZAV {
namespace Log {

/// What the processes that were forked from the one that made the series have in common. They take no lock
/// for it, since one of them may be killed at any moment.
struct SeriesOwner::Common {
    std::atomic<int> processId{Platform::processId()};        ///< of the process that rotates
    const std::uint64_t idSpace = Platform::processIdSpace(); ///< of that id
    std::atomic<unsigned> rotations{0};
    std::atomic<unsigned> rotationsBefore{0}; ///< when the process that rotates began the series
    std::atomic<bool> isShared{false};        ///< whether a process that may not rotate has written
    std::atomic<bool> isFree{false}; ///< whether the process that rotates has no appender for it any more

    /// For a process that has no appender for the series yet, and begins it as the first one did.
    void takeIfFree() {
        int rotating = processId;
        const bool mayTake = Platform::processIdSpace() == idSpace &&
                             (isFree.exchange(false) || !Platform::isProcessAlive(rotating));
        if (mayTake && processId.compare_exchange_strong(rotating, Platform::processId())) {
            rotationsBefore = rotations.load();
            isShared = false;
        }
    }

    static_assert(std::atomic<int>::is_always_lock_free && std::atomic<unsigned>::is_always_lock_free &&
                      std::atomic<bool>::is_always_lock_free,
                  "a lock would be in the memory of one process");
};

struct SeriesOwner::Series {
    const Platform::ForkedMemory memory{sizeof(Common)};
    Common& common = *new (memory.get()) Common;
    int users = 0; ///< objects of this class, guarded by the table's lock
};

struct SeriesOwner::Table {
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::map<std::string, Series> series ZAV_LOG_GUARDED_BY(lock);

    Series& enter(const std::string& livePath) {
        const Platform::ScopedLock scope(lock);
        Series& entered = series.try_emplace(livePath).first->second;
        if (entered.users == 0) {
            entered.common.takeIfFree();
        }
        ++entered.users;
        return entered;
    }

    /// The series stays, since a forked child may have its memory, and must hear of what the next appender
    /// for the same files does.
    void leave(Series& left) {
        const Platform::ScopedLock scope(lock);
        --left.users;
        if (left.users == 0 && left.common.processId == Platform::processId()) {
            left.common.isFree = true;
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

/// Whoever takes over a series that has begun finds a live file that others have written. In another
/// container than that of the process that rotates, nothing is known of it, and it may well live.
bool SeriesOwner::mayRotate() {
    Common& common = series_.common;
    const int self = Platform::processId();
    int rotating = common.processId;
    const bool mayTake = rotating == self || common.isFree || !Platform::isProcessAlive(rotating);
    if (!mayTake || Platform::processIdSpace() != common.idSpace) {
        return false;
    }
    if (rotating == self) {
        return true;
    }
    if (!common.isFree.exchange(false) && Platform::isProcessAlive(rotating)) {
        return false; // another one has just taken it
    }
    if (!common.processId.compare_exchange_strong(rotating, self)) {
        return false;
    }
    if (common.rotations != common.rotationsBefore) {
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

bool SeriesOwner::isNotAlone() const {
    return series_.common.processId != Platform::rememberedProcessId() ||
           series_.common.rotations != rotationsSeen_;
}

} // namespace Log
} // namespace ZAV
