#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <atomic>
#include <map>

namespace ZAV {
namespace Log {

struct SeriesOwner::Series {
    std::string livePath;
    std::atomic<int> processId{Platform::processId()}; ///< of the process that rotates
    unsigned users = 0;                                ///< objects of this class, guarded by the table's lock
};

struct SeriesOwner::Table {
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::map<std::string, Series> series ZAV_LOG_GUARDED_BY(lock);

    Series& enter(const std::string& livePath) {
        const Platform::ScopedLock scope(lock);
        Series& entered = series[livePath];
        entered.livePath = livePath;
        ++entered.users;
        return entered;
    }

    /// A series that the parent rotates stays in the table of a forked child.
    void leave(Series& left) {
        const Platform::ScopedLock scope(lock);
        --left.users;
        if (left.users == 0 && left.processId == Platform::processId()) {
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

SeriesOwner::SeriesOwner(const std::string& livePath) : series_(table().enter(livePath)) {}

SeriesOwner::~SeriesOwner() {
    table().leave(series_);
}

bool SeriesOwner::mayRotate() {
    const int self = Platform::processId();
    int rotating = series_.processId;
    if (rotating == self) {
        return true;
    }
    return !Platform::isProcessAlive(rotating) && series_.processId.compare_exchange_strong(rotating, self);
}

} // namespace Log
} // namespace ZAV
