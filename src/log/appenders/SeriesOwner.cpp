#include "log/appenders/SeriesOwner.h"

#include "platform/CriticalSection.h"
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

/// A process, as its id namespace and its id; 0 means none.
using ProcessName = std::uint64_t;
constexpr unsigned ID_BITS = 32;

ProcessName thisProcess() {
    return Platform::processIdSpace() << ID_BITS | static_cast<std::uint32_t>(Platform::processId());
}

/// Nothing is known of a process in another container, so it counts as alive.
bool mayLive(ProcessName process, ProcessName self) {
    return process != 0 && (process >> ID_BITS != self >> ID_BITS ||
                            Platform::isProcessAlive(static_cast<int>(static_cast<std::uint32_t>(process))));
}

/// \return a hash of a path; never 0
std::uint64_t keyOf(const std::string& path) {
    std::uint64_t key = 0xCBF29CE484222325; // FNV-1a
    for (const char character : path) {
        key = (key ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    }
    return key == 0 ? 1 : key;
}

} // namespace

/// The shared state of a series, for a parent and its forked children. Lock-free, since one of them may be
/// killed at any moment. Zeroed memory is a valid object.
struct SeriesOwner::Common {
    std::atomic<std::uint64_t> key; ///< of the path; 0 while the entry is free
    std::atomic<ProcessName> owner; ///< the process that rotates; 0 if it has no appender left
    std::atomic<unsigned> rotations;
    std::atomic<unsigned> rotationsBefore; ///< value of `rotations` when the owner began the series
    std::atomic<bool> isShared; ///< whether a process that may not rotate has written to the live file

    /// For a process that had no appender for the series, and begins it like the first owner.
    void takeIfFree() {
        const ProcessName self = thisProcess();
        ProcessName rotating = owner;
        if (mayLive(rotating, self)) {
            return;
        }
        isShared = false; // before another process can see that it has to follow
        if (owner.compare_exchange_strong(rotating, self)) {
            rotationsBefore = rotations.load();
        }
    }

    /// \return whether this process owns the series. Makes no system call.
    bool isOwn() const {
        return static_cast<std::uint32_t>(owner) ==
               static_cast<std::uint32_t>(Platform::rememberedProcessId());
    }

    static_assert(std::atomic<std::uint64_t>::is_always_lock_free &&
                      std::atomic<unsigned>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
                  "a lock would be in the memory of one process");
};

struct SeriesOwner::Series {
    std::unique_ptr<Platform::ForkedMemory> ownMemory; ///< only if the shared table was full
    Common* common = nullptr;
    int users = 0; ///< number of `SeriesOwner` objects; guarded by the table's lock
};

struct SeriesOwner::Table : Platform::NeverDestroyed<Table> {
    /// More series than related processes have, unless they keep changing names. The system allocates only
    /// the pages that are used.
    static constexpr std::size_t MAX_SERIES = 2048;
    using AllCommon = std::array<Common, MAX_SERIES>;

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

    /// Two processes may enter a path at once. If the table is full, only children forked later share the
    /// entry with this process.
    void find(Series& entered, std::uint64_t key) {
        AllCommon& all = *static_cast<AllCommon*>(memory.get());
        for (std::size_t step = 0; step < MAX_SERIES; ++step) {
            Common& common = all[(key + step) % MAX_SERIES];
            std::uint64_t found = 0;
            if (common.key.compare_exchange_strong(found, key) || found == key) {
                entered.common = &common;
                return;
            }
        }
        entered.ownMemory = std::make_unique<Platform::ForkedMemory>(sizeof(Common));
        entered.common = static_cast<Common*>(entered.ownMemory->get());
    }

    /// The entry stays, since a forked child may use it, and must see what the next appender for the same
    /// files does.
    void leave(Series& left) {
        const Platform::ScopedLock scope(lock);
        --left.users;
        if (left.users == 0) {
            ProcessName self = thisProcess();
            left.common->owner.compare_exchange_strong(self, 0);
        }
    }
};

/// Created at load, so that all forked children share it.
const SeriesOwner::Table& SeriesOwner::madeAtLoad = Table::instance();

SeriesOwner::SeriesOwner(const std::string& livePath)
    : series_(Table::instance().enter(livePath)), rotationsSeen_(series_.common->rotations) {}

SeriesOwner::~SeriesOwner() {
    Table::instance().leave(series_);
}

/// If a series already in use is taken over, others have written its live file.
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

/// Two appenders of the owning process do not follow each other.
bool SeriesOwner::isBehind() const {
    return series_.common->rotations != rotationsSeen_ && !series_.common->isOwn();
}

bool SeriesOwner::mustRecheckFile() const {
    return !series_.common->isOwn() || series_.common->rotations != rotationsSeen_;
}

} // namespace Log
} // namespace ZAV
