#pragma once

#include "Workload.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Bench {

/// The timing of one producer's calls.
struct Rhythm {
    std::size_t callsAtOnce;
    std::chrono::microseconds period; ///< from the first call of a burst to the first of the next
    std::size_t bursts;
};

constexpr Rhythm BURSTS{1000, std::chrono::milliseconds(20), 20};
constexpr Rhythm SPACED{1, std::chrono::microseconds(100), 10'000};

/// Measures single calls. For every logger each includes half of two clock readings.
template <typename Call>
std::vector<double> timeCalls(const Rhythm& rhythm, std::size_t bursts, Call& call) {
    std::vector<double> nanoseconds(bursts * rhythm.callsAtOnce);
    std::size_t count = 0;
    Clock::time_point next = Clock::now();
    for (std::size_t burst = 0; burst < bursts; ++burst) {
        std::this_thread::sleep_until(next);
        next += rhythm.period;
        for (std::size_t i = 0; i < rhythm.callsAtOnce; ++i) {
            const Clock::time_point start = Clock::now();
            call(count);
            nanoseconds[count++] = nanosecondsBetween(start, Clock::now());
        }
    }
    return nanoseconds;
}

/// Waits until a file has that many lines.
inline void waitForLines(const std::string& path, std::size_t lines) {
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(60);
    for (;;) {
        std::ifstream stream(path, std::ios::binary);
        const auto found = std::count(std::istreambuf_iterator<char>(stream), {}, '\n');
        if (static_cast<std::size_t>(found) >= lines) {
            return;
        }
        if (Clock::now() > deadline) {
            throw std::runtime_error(path + " did not get all lines");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/// Calls with values by one producer, which hand their messages over to another thread. A tenth more of them
/// precedes as warm-up. The other threads' share of a core is the consumer's.
template <typename Call>
void measureLatency(const Task& task, const Rhythm& rhythm, Call call, const std::string& file) {
    const std::size_t bursts = rhythm.bursts / std::min<std::size_t>(task.divisor, rhythm.bursts / 10);
    const std::size_t warmUp = timeCalls(rhythm, bursts / 10 + 1, call).size();
    const Clock::time_point start = Clock::now();
    const double cpuStart = cpuNanosecondsOfOtherThreads();
    std::vector<double> nanoseconds = timeCalls(rhythm, bursts, call);
    const double cpu = cpuNanosecondsOfOtherThreads() - cpuStart;
    printFigure("consumer_percent", 100 * cpu / nanosecondsBetween(start, Clock::now()));
    waitForLines(file, warmUp + nanoseconds.size());
    FileCheck(file, formatWithValues()).expectMessages(warmUp + nanoseconds.size());
    std::sort(nanoseconds.begin(), nanoseconds.end());
    const auto print = [&nanoseconds](const char* name, std::size_t perThousand) {
        printFigure(name, nanoseconds[(nanoseconds.size() - 1) * perThousand / 1000]);
    };
    print("p50_ns", 500);
    print("p99_ns", 990);
    print("p999_ns", 999);
    print("max_ns", 1000);
}

/// One burst of as many calls with values as in the other asynchronous rows.
template <typename MakeCall>
void measureBurst(const Task& task, MakeCall makeCall, const std::string& file) {
    const Calls calls = callsOfAllThreads(task, ASYNCHRONOUS_MESSAGES);
    const Timing timing =
        runThreads(task.threads, calls, makeCall, [&] { waitForLines(file, calls.warmUp * task.threads); });
    waitForLines(file, calls.total() * task.threads);
    const Clock::time_point end = Clock::now();
    FileCheck(file, formatWithValues()).expectMessages(calls.total() * task.threads);
    printFigure("producer_ns", timing.nanosecondsPerCall);
    const double messages = static_cast<double>(calls.measured * task.threads);
    printFigure("end_to_end_ns", nanosecondsBetween(timing.start, end) / messages);
}

} // namespace Bench
