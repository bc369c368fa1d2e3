#pragma once

#include "Latency.h"
#include "Memory.h"
#include "Workload.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Bench {

/// Blocks a large number of threads without using processor time.
class Gate {
public:
    void pass(std::size_t number) {
        std::unique_lock<std::mutex> lock(mutex_);
        ++arrived_;
        changed_.notify_all();
        changed_.wait(lock, [&] { return open_ >= number; });
    }
    void waitForArrivals(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return arrived_ == count; });
    }
    void open(std::size_t number) {
        const std::lock_guard<std::mutex> lock(mutex_);
        open_ = number;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t arrived_ = 0;
    std::size_t open_ = 0;
};

/// Allocates what any working thread uses anyway: some stack, and some heap.
[[gnu::noinline]] inline void settleThread() {
    std::array<char, 64 * 1024> stack;
    for (std::size_t i = 0; i < stack.size(); i += 1024) {
        static_cast<volatile char*>(stack.data())[i] = 1;
    }
    std::free(const_cast<void*>(static_cast<volatile void*>(std::malloc(64))));
}

/// Memory per thread that has logged one message and is still running: the growth of the resident memory from
/// when all threads exist until all messages are in the file, divided by the threads.
/// \param makeCall see runThreads
template <typename MakeCall>
void measureThreadMemory(const Task& task, MakeCall makeCall, const std::string& file) {
    auto first = makeCall(0);
    first(0);
    waitForLines(file, 1);
    Gate gate;
    std::vector<std::thread> team;
    for (std::size_t index = 0; index < task.threads; ++index) {
        team.emplace_back([&, index] {
            settleThread();
            auto call = makeCall(index);
            gate.pass(1);
            call(index);
            gate.pass(2);
        });
    }
    gate.waitForArrivals(task.threads);
    const std::size_t before = residentKilobytes();
    gate.open(1);
    waitForLines(file, task.threads + 1);
    gate.waitForArrivals(2 * task.threads);
    const std::size_t after = residentKilobytes();
    gate.open(2);
    for (std::thread& thread : team) {
        thread.join();
    }
    FileCheck(file, formatWithValues()).expectMessages(task.threads + 1);
    printFigure("thread_kb", (static_cast<double>(after) - static_cast<double>(before)) /
                                 static_cast<double>(task.threads));
}

} // namespace Bench
