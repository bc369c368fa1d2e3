#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"
#include "platform/Process.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace ZAV {
namespace Log {

namespace {

/// A process, as the number of what its id is counted in and the id; 0 stands for none.
using ProcessName = std::uint64_t;
constexpr unsigned ID_BITS = 32;

ProcessName thisProcess() {
    return Platform::processIdSpace() << ID_BITS | static_cast<std::uint32_t>(Platform::processId());
}

/// In another container nothing is known of a process, and it may well live.
bool mayLive(ProcessName process, ProcessName self) {
    return process != 0 && (process >> ID_BITS != self >> ID_BITS ||
                            Platform::isProcessAlive(static_cast<int>(static_cast<std::uint32_t>(process))));
}

/// \return a number that stands for a path; never 0
std::uint64_t keyOf(const std::string& path) {
    std::uint64_t key = 0xCBF29CE484222325; // FNV-1a
    for (const char character : path) {
        key = (key ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    }
    return key == 0 ? 1 : key;
}

} // namespace

/// What a parent and all that were forked from it have in common of a series. They take no lock for it, since
/// one of them may be killed at any moment. Memory of zeros is such an object.
struct SeriesOwner::Common {
    std::atomic<std::uint64_t> key; ///< of the path; 0 until a process has come to it
    std::atomic<ProcessName> owner; ///< the process that rotates; 0 if that has no appender for it any more
    std::atomic<unsigned> rotations;
    std::atomic<unsigned> rotationsBefore; ///< when the process that rotates began the series
    std::atomic<bool> isShared;            ///< whether a process that may not rotate has written

    /// For a process that has no appender for the series yet, and begins it as the first one did.
    void takeIfFree() {
        const ProcessName self = thisProcess();
        ProcessName rotating = owner;
        if (mayLive(rotating, self)) {
            return;
        }
        isShared = false; // before another process can know that it has to follow
        if (owner.compare_exchange_strong(rotating, self)) {
            rotationsBefore = rotations.load();
        }
    }

    /// \return whether this process rotates. Costs no call of the system.
    bool isOwn() const {
        return static_cast<std::uint32_t>(owner) ==
               static_cast<std::uint32_t>(Platform::rememberedProcessId());
    }

    static_assert(std::atomic<std::uint64_t>::is_always_lock_free &&
                      std::atomic<unsigned>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
                  "a lock would be in the memory of one process");
};

struct SeriesOwner::Series {
    std::unique_ptr<Platform::ForkedMemory> ownMemory; ///< only if the common one was full
    Common* common = nullptr;
    int users = 0; ///< objects of this class, guarded by the table's lock
};

struct SeriesOwner::Table : Platform::NeverDestroyed<Table> {
    /// More series than a family of processes has, short of one that changes their names all the time. The
    /// system gives memory only for what of it is used.
    static constexpr std::size_t MOST_SERIES = 2048;
    using AllCommon = std::array<Common, MOST_SERIES>;

    const Platform::ForkedMemory memory{sizeof(AllCommon)};
    Platform::CriticalSection lock{Platform::AWAITED_BY_FORK};
    std::map<std::string, Series> series ZAV_LOG_GUARDED_BY(lock);

    Series& enter(const std::string& livePath) {
        const Platform::ScopedLock scope(lock);
        Series& entered = series[livePath];
        if (entered.common == nullptr) {
            find(entered, keyOf(livePath));
        }
        if (entered.users == 0) {
            entered.common->takeIfFree();
        }
        ++entered.users;
        return entered;
    }

    /// Two processes may come to a path at once. When there is no place left, only the children to come have
    /// it in common with this process.
    void find(Series& entered, std::uint64_t key) {
        AllCommon& all = *static_cast<AllCommon*>(memory.get());
        for (std::size_t step = 0; step < MOST_SERIES; ++step) {
            Common& common = all[(key + step) % MOST_SERIES];
            std::uint64_t found = 0;
            if (common.key.compare_exchange_strong(found, key) || found == key) {
                entered.common = &common;
                return;
            }
        }
        entered.ownMemory = std::make_unique<Platform::ForkedMemory>(sizeof(Common));
        entered.common = static_cast<Common*>(entered.ownMemory->get());
    }

    /// The series stays, since a forked child may have it, and must hear of what the next appender for the
    /// same files does.
    void leave(Series& left) {
        const Platform::ScopedLock scope(lock);
        --left.users;
        if (left.users == 0) {
            ProcessName self = thisProcess();
            left.common->owner.compare_exchange_strong(self, 0);
        }
    }
};

/// While the library is loaded, so that all that are forked have it, too.
const SeriesOwner::Table& SeriesOwner::madeAtLoad = Table::instance();

SeriesOwner::SeriesOwner(const std::string& livePath)
    : series_(Table::instance().enter(livePath)), rotationsSeen_(series_.common->rotations) {}

SeriesOwner::~SeriesOwner() {
    Table::instance().leave(series_);
}

/// Whoever takes over a series that has begun finds a live file that others have written.
bool SeriesOwner::mayRotate() {
    Common& common = *series_.common;
    const ProcessName self = thisProcess();
    ProcessName rotating = common.owner;
    if (rotating == self) {
        return true;
    }
    if (mayLive(rotating, self) || !common.owner.compare_exchange_strong(rotating, self)) {
        return false;
    }
    if (common.rotations != common.rotationsBefore) {
        common.isShared = true;
    }
    return true;
}

bool SeriesOwner::isShared() const {
    return series_.common->isShared;
}

void SeriesOwner::noteRotation() {
    rotationsSeen_ = ++series_.common->rotations;
}

void SeriesOwner::follow() {
    if (!series_.common->isOwn()) {
        series_.common->isShared = true;
    }
    rotationsSeen_ = series_.common->rotations;
}

/// Two appenders of the process that rotates do not follow each other.
bool SeriesOwner::isBehind() const {
    return series_.common->rotations != rotationsSeen_ && !series_.common->isOwn();
}

bool SeriesOwner::isNotAlone() const {
    return !series_.common->isOwn() || series_.common->rotations != rotationsSeen_;
}

} // namespace Log
} // namespace ZAV
