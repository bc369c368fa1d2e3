#include "log/appenders/Packer.h"

#include "log/Appender.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Process.h"
#include "platform/Threads.h"

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

/// Long enough for anybody who was about to write to a file when it was rolled.
constexpr std::chrono::seconds PAUSE{1};

/// How long to wait for an interrupted packing, which takes a few milliseconds unless a listener is just
/// being told of a failure.
constexpr std::chrono::seconds LONGEST_WAIT{2};

const Packer& madeAtLoad = Packer::instance();

} // namespace

Packer::Packer() {
    Platform::atProcessEnd([] { instance().forget(nullptr); });
    Platform::atFork(nullptr, [] { instance().beginInChild(); });
}

void Packer::pack(const Appender* user, const std::string& path, bool mayGrow) {
    add({user, user->getName(), path, "", mayGrow ? Deadline(PAUSE) : Deadline(std::chrono::seconds(0))});
}

void Packer::report(const Appender* user, const std::string& problem) {
    add({user, user->getName(), "", problem, Deadline(std::chrono::seconds(0))});
}

bool Packer::isIdle() {
    const ScopedLock lock(lock_);
    return jobs_.empty();
}

void Packer::add(Job job) {
    {
        const ScopedLock lock(lock_);
        if (!isTakenOver(job)) {
            jobs_.push_back(std::move(job));
        }
    }
    startIfNeeded();
}

/// Assigns an existing equal job to the user of this one.
bool Packer::isTakenOver(const Job& job) {
    const auto first =
        isInterrupted_ ? std::next(jobs_.begin()) : jobs_.begin(); // the first is being given up
    const auto there = std::find_if(first, jobs_.end(), [&job](const Job& other) {
        return other.path == job.path && other.problem == job.problem;
    });
    if (there == jobs_.end()) {
        return false;
    }
    there->user = job.user;
    there->name = job.name;
    return true;
}

/// If the thread cannot be started, the next file tries again.
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
void Packer::forget(const Appender* user) noexcept {
    const auto isOf = [user](const Job& job) { return user == nullptr || job.user == user; };
    {
        const ScopedLock lock(lock_);
        isInterrupted_ = isInterrupted_ || (isRunning_ && !jobs_.empty() && isOf(jobs_.front()));
        for (auto job = jobs_.begin(); job != jobs_.end();) {
            const bool isInProgress = isRunning_ && job == jobs_.begin();
            job = !isInProgress && isOf(*job) ? jobs_.erase(job) : std::next(job);
        }
    }
    waitPoint_.notifyAll();
    if (!LibraryCall::isOpen()) {
        waitPoint_.wait(Deadline(LONGEST_WAIT), [this, user] { return !isIn(user); });
    }
}

bool Packer::isIn(const Appender* user) {
    const ScopedLock lock(lock_);
    return std::any_of(jobs_.begin(), jobs_.end(),
                       [user](const Job& job) { return user == nullptr || job.user == user; });
}

void Packer::run() {
    Packer& packer = instance();
    Platform::setCurrentThreadPriority(Platform::THREAD_PRIORITY_LOWEST_VALUE); // best effort
    const unsigned generation = Platform::forkGeneration();
    while (const Job* const job = packer.first()) {
        packer.work(*job);
        if (Platform::forkGeneration() != generation) {
            return; // a listener has forked, and this is the child, which has its own queue
        }
        packer.removeFirst();
    }
}

/// \return null if there is none; the thread then ends
const Packer::Job* Packer::first() {
    const ScopedLock lock(lock_);
    isRunning_ = !jobs_.empty();
    return isRunning_ ? &jobs_.front() : nullptr;
}

void Packer::work(const Job& job) {
    waitPoint_.wait(job.pause, [this] { return isInterrupted_.load(); });
    if (isInterrupted_) {
        return;
    }
    try {
        const PackingResult packing = job.problem.empty() ? packFile(job.path, isInterrupted_)
                                                          : PackingResult{PackingResult::FAILED, job.problem};
        if (packing.result == PackingResult::FAILED) {
            deliver(job, packing.problem);
        }
    } catch (const std::exception&) {
        return; // out of memory; the next start finds the file
    }
}

void Packer::deliver(const Job& job, const std::string& problem) {
    const LibraryCall call; // a listener may log
    try {
        const Appender* user = nullptr;
        std::string name;
        {
            const ScopedLock lock(lock_);
            user = job.user;
            name = job.name;
        }
        FailureNotice::noteFailed(user, name, problem.c_str());
        FailureReport::deliverWithoutMessage("packing", problem);
    } catch (const Platform::ForcedUnwind&) {
        throw; // the thread is being cancelled
    } catch (...) {
        return; // a listener's exception concerns no caller
    }
}

void Packer::removeFirst() {
    {
        const ScopedLock lock(lock_);
        jobs_.pop_front();
        isInterrupted_ = false;
    }
    waitPoint_.notifyAll();
}

/// The thread does not exist in the child.
void Packer::beginInChild() noexcept {
    waitPoint_.renewInChild();
    closePackedFilesInChild();
    const ScopedLock lock(lock_);
    jobs_.clear();
    isRunning_ = false;
    isInterrupted_ = false;
}

} // namespace Log
} // namespace ZAV
