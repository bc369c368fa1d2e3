#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
#include "platform/Process.h"

#include <algorithm>
#include <vector>

namespace ZAV {
namespace Log {

namespace {

struct Entry {
    std::string livePath;
    int processId;
};

struct Table {
    Platform::CriticalSection lock; ///< nothing else is taken while it is held
    std::vector<Entry> entries ZAV_LOG_GUARDED_BY(lock);
};

/// Never destroyed, since threads may still log while the process ends.
Table& table() {
    static Table& entries = *new Table;
    return entries;
}

/// \return the process that rotates the series: the one that this process was forked from, if that is still
///         alive, or this one, which is then entered
int enter(const std::string& livePath) {
    const int self = Platform::processId();
    Table& known = table();
    const Platform::ScopedLock lock(known.lock);
    for (const Entry& entry : known.entries) {
        const bool isOthers = entry.livePath == livePath && entry.processId != self;
        if (isOthers && Platform::isProcessAlive(entry.processId)) {
            return entry.processId;
        }
    }
    known.entries.push_back({livePath, self});
    return self;
}

} // namespace

SeriesOwner::SeriesOwner(const std::string& livePath) : livePath_(livePath), processId_(enter(livePath)) {}

/// What the parent rotates stays entered in a forked child.
SeriesOwner::~SeriesOwner() {
    Table& known = table();
    const Platform::ScopedLock lock(known.lock);
    const auto own = std::find_if(known.entries.begin(), known.entries.end(), [this](const Entry& entry) {
        return entry.livePath == livePath_ && entry.processId == Platform::processId();
    });
    if (own != known.entries.end() && own->processId == processId_) {
        known.entries.erase(own);
    }
}

bool SeriesOwner::mayRotate() {
    const int self = Platform::processId();
    if (processId_ != self && !Platform::isProcessAlive(processId_)) {
        processId_ = enter(livePath_);
    }
    return processId_ == self;
}

} // namespace Log
} // namespace ZAV
