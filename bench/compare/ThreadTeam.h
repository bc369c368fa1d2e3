#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

namespace Bench {

using Clock = std::chrono::steady_clock;

inline double nanosecondsBetween(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::nano>(end - start).count();
}

/// Blocks threads until all of them are ready, so that they start together.
class StartLine {
public:
    explicit StartLine(std::size_t threads) : missing_(threads) {}

    void wait() {
        missing_.fetch_sub(1);
        while (!open_.load(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }

    void waitForThreads() const {
        while (missing_.load() > 0) {
            std::this_thread::yield();
        }
    }

    void open() { open_.store(true, std::memory_order_release); }

private:
    std::atomic<std::size_t> missing_;
    std::atomic<bool> open_{false};
};

/// How many calls each thread makes; those of the warm-up are not measured.
struct Calls {
    std::size_t warmUp;
    std::size_t measured;

    std::size_t total() const { return warmUp + measured; }
};

struct Timing {
    Clock::time_point start;      ///< when the first thread started
    Clock::time_point end;        ///< when the last thread ended
    double nanosecondsPerCall;    ///< cost of a call to its caller: the mean over the threads
    double nanosecondsPerMessage; ///< from the start to the end, divided by the calls of all threads
};

struct ThreadTiming {
    Clock::time_point start;
    Clock::time_point end;
};

/// Prevents the compiler from reusing what it read in the previous call: no application logs in such a tight
/// loop.
inline void forgetMemory() {
    asm volatile("" ::: "memory");
}

#if !defined(BENCH_INLINED_LOOP)
#define BENCH_INLINED_LOOP [[gnu::flatten]]
#endif

/// Not inlined itself, so that the warm-up runs the same code as the measurement, and so that each kind of
/// call has a single caller: the compiler then inlines the call into the loop, however long its cold path is.
template <typename Call>
[[gnu::noinline]] BENCH_INLINED_LOOP void repeat(std::size_t calls, Call& call) {
    for (std::size_t i = 0; i < calls; ++i) {
        call(i);
        forgetMemory();
    }
}

inline Timing summarise(const std::vector<ThreadTiming>& timings, std::size_t callsPerThread) {
    Timing result{timings.front().start, timings.front().end, 0, 0};
    double sum = 0;
    for (const ThreadTiming& timing : timings) {
        result.start = std::min(result.start, timing.start);
        result.end = std::max(result.end, timing.end);
        sum += nanosecondsBetween(timing.start, timing.end);
    }
    const double calls = static_cast<double>(callsPerThread) * static_cast<double>(timings.size());
    result.nanosecondsPerCall = sum / calls;
    result.nanosecondsPerMessage = nanosecondsBetween(result.start, result.end) / calls;
    return result;
}

/// The one loop that all loggers are measured in.
/// \param makeCall runs in a thread with its index, and returns what the thread calls with a count from 0
/// \param settle called between the warm-up of all threads and the measured calls
template <typename MakeCall, typename Settle>
Timing runThreads(std::size_t threads, Calls calls, MakeCall makeCall, Settle settle) {
    std::vector<ThreadTiming> timings(threads);
    StartLine startLine(threads);
    std::vector<std::thread> team;
    for (std::size_t index = 0; index < threads; ++index) {
        team.emplace_back([&, index] {
            auto call = makeCall(index);
            repeat(calls.warmUp, call);
            startLine.wait();
            const Clock::time_point start = Clock::now();
            repeat(calls.measured, call);
            timings[index] = {start, Clock::now()};
        });
    }
    startLine.waitForThreads();
    settle();
    startLine.open();
    for (std::thread& thread : team) {
        thread.join();
    }
    return summarise(timings, calls.measured);
}

template <typename MakeCall>
Timing runThreads(std::size_t threads, Calls calls, MakeCall makeCall) {
    return runThreads(threads, calls, makeCall, [] {});
}

} // namespace Bench
