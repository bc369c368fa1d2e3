#include "log/appenders/Packer.h"

#include "ForcedUnwind.h"
#include "log/appenders/GzipFile.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Fork.h"
#include "platform/ProcessLifetime.h"
#include "platform/SignalGuard.h"
#include "platform/ThreadPriority.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>
#include <thread>
#include <utility>

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// In which whoever was about to write to a file when it was rolled has written.
constexpr std::chrono::seconds PAUSE{1};

/// How long is waited for a packing that is interrupted; it comes to that in a few milliseconds, unless a
/// listener hears of a failure just then.
constexpr std::chrono::seconds LONGEST_WAIT{2};

void deliver(const std::string& problem) {
    const LibraryCall call; // a listener may log
    try {
        FailureReport::deliverWithoutMessage("packing", problem);
    } catch (const Platform::ForcedUnwind&) {
        throw; // the thread is being cancelled
    } catch (...) {
        return; // there is no caller to whom what a listener throws could matter
    }
}

} // namespace

Packer& Packer::instance() {
    static Packer& packer = *new Packer;
    return packer;
}

namespace {

/// So that no thread makes it while another one forks.
const Packer& madeAtLoad = Packer::instance();

} // namespace

Packer::Packer() {
    Platform::atProcessEnd([] { instance().forget(nullptr); });
    Platform::atFork(nullptr, [] { instance().beginInChild(); });
}

void Packer::pack(const void* user, const std::string& path, bool mayGrow) {
    add({user, path, "", mayGrow ? Deadline(PAUSE) : Deadline(std::chrono::seconds(0))});
}

void Packer::report(const void* user, const std::string& problem) {
    add({user, "", problem, Deadline(std::chrono::seconds(0))});
}

bool Packer::isIdle() {
    const ScopedLock lock(lock_);
    return jobs_.empty();
}

void Packer::add(Job job) {
    {
        const ScopedLock lock(lock_);
        const bool isThere = std::any_of(jobs_.begin(), jobs_.end(), [&job](const Job& other) {
            return other.path == job.path && other.problem == job.problem;
        });
        if (!isThere) {
            jobs_.push_back(std::move(job));
        }
    }
    startIfNeeded();
}

/// A thread that cannot be started now is tried again with the next file.
void Packer::startIfNeeded() noexcept {
    {
        const ScopedLock lock(lock_);
        if (isRunning_ || jobs_.empty()) {
            return;
        }
        isRunning_ = true;
    }
    try {
        Platform::keepLibraryLoaded();
        const Platform::NoSignals noSignals;
        std::thread(run).detach();
    } catch (const std::exception&) {
        const ScopedLock lock(lock_);
        isRunning_ = false;
    }
}

/// \param user null for all
void Packer::forget(const void* user) noexcept {
    const auto isOf = [user](const Job& job) { return user == nullptr || job.user == user; };
    {
        const ScopedLock lock(lock_);
        isInterrupted_ = isInterrupted_ || (isRunning_ && !jobs_.empty() && isOf(jobs_.front()));
        for (auto job = jobs_.begin(); job != jobs_.end();) {
            const bool isBegun = isRunning_ && job == jobs_.begin();
            job = !isBegun && isOf(*job) ? jobs_.erase(job) : std::next(job);
        }
    }
    bell_.ring();
    if (!LibraryCall::isOpen()) {
        bell_.wait(Deadline(LONGEST_WAIT), [this, user] { return !isIn(user); });
    }
}

bool Packer::isIn(const void* user) {
    const ScopedLock lock(lock_);
    return std::any_of(jobs_.begin(), jobs_.end(),
                       [user](const Job& job) { return user == nullptr || job.user == user; });
}

void Packer::run() {
    Packer& packer = instance();
    Platform::setCurrentThreadPriority(Platform::THREAD_PRIORITY_LOWEST_VALUE); // if it can be had
    while (const Job* const job = packer.first()) {
        packer.work(*job);
        packer.removeFirst();
    }
}

/// \return null if there is none, and the thread ends
const Packer::Job* Packer::first() {
    const ScopedLock lock(lock_);
    isRunning_ = !jobs_.empty();
    return isRunning_ ? &jobs_.front() : nullptr;
}

void Packer::work(const Job& job) {
    bell_.wait(job.pause, [this] { return isInterrupted_.load(); });
    if (isInterrupted_) {
        return;
    }
    try {
        const Packing packing =
            job.problem.empty() ? packFile(job.path, isInterrupted_) : Packing{Packing::FAILED, job.problem};
        if (packing.result == Packing::FAILED) {
            deliver(packing.problem);
        }
    } catch (const std::exception&) {
        return; // no memory; the next start finds the file
    }
}

void Packer::removeFirst() {
    {
        const ScopedLock lock(lock_);
        jobs_.pop_front();
        isInterrupted_ = false;
    }
    bell_.ring();
}

/// The thread does not run here.
void Packer::beginInChild() noexcept {
    bell_.renewInChild();
    closePackedFilesInChild();
    const ScopedLock lock(lock_);
    jobs_.clear();
    isRunning_ = false;
    isInterrupted_ = false;
}

} // namespace Log
} // namespace ZAV
