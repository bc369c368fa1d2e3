#pragma once

#include "CpuTime.h"
#include "DroppedMessages.h"
#include "LogFiles.h"
#include "Memory.h"
#include "RotatedFiles.h"
#include "SampleLine.h"
#include "ThreadTeam.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>

namespace Bench {

/// What the driver requests from a program.
struct Task {
    std::size_t threads;
    std::string folder;  ///< initially empty, for the log files
    std::size_t divisor; ///< the factor by which a quick run is smaller

    std::string file() const { return folder + "/log"; }
    bool oneThread() const { return threads == 1; }
};

/// Prints a figure for the driver.
inline void printFigure(const char* name, double value) {
    std::printf("%s %.4f\n", name, value);
}

// The numbers of messages: of all threads together if they write, per thread if they do not.
constexpr std::size_t SYNCHRONOUS_MESSAGES = 200'000;
constexpr std::size_t ASYNCHRONOUS_MESSAGES = 400'000;
constexpr std::size_t ROTATED_MESSAGES = 600'000;
constexpr std::size_t RENDERED_MESSAGES = 400'000;
constexpr std::size_t REOPENED_MESSAGES = 40'000;

constexpr std::size_t ROTATION_BYTES = 10 * 1024 * 1024;
constexpr std::size_t ROTATION_FILES = 4;

inline Calls callsPerThread(const Task& task, std::size_t calls) {
    const std::size_t measured = calls / task.divisor;
    return {measured / 20 + 1, measured};
}

inline Calls callsOfAllThreads(const Task& task, std::size_t calls) {
    return callsPerThread(task, calls / task.threads);
}

/// \return the number of messages that go through a queue; a bounded one gets that capacity
inline std::size_t asynchronousMessages(const Task& task) {
    return callsOfAllThreads(task, ASYNCHRONOUS_MESSAGES).total() * task.threads;
}

/// For calls whose cost differs a hundredfold between loggers: a trial run determines how many of them take a
/// tenth of a second.
template <typename MakeCall>
Timing runCheapCalls(const Task& task, MakeCall makeCall) {
    constexpr double NANOSECONDS = 1e8;
    constexpr std::size_t TRIAL_CALLS = 100'000;
    const Timing trial = runThreads(task.threads, {0, TRIAL_CALLS}, makeCall);
    const auto calls = static_cast<std::size_t>(NANOSECONDS / trial.nanosecondsPerCall);
    return runThreads(task.threads, callsPerThread(task, calls), makeCall);
}

/// Calls that write nothing.
/// \param makeCall see runThreads
/// \param file the file that the logger would have written to
/// \param logAccepted logs one message that is not rejected, to show that the logger writes at all
template <typename MakeCall, typename LogAccepted>
void measureRejectedCalls(const Task& task, MakeCall makeCall, LogAccepted logAccepted,
                          const std::function<std::string()>& file, const FileFormat& format = FileFormat()) {
    const Timing timing = runCheapCalls(task, makeCall);
    logAccepted();
    FileCheck(file(), format).expectMessages(1);
    printFigure("call_ns", timing.nanosecondsPerCall);
}

/// Calls whose message reaches an appender that ignores it.
/// \param dropped the appender's counter
/// \param textPattern the text of every message
template <typename MakeCall>
void measureDroppedCalls(const Task& task, MakeCall makeCall, DroppedMessages& dropped,
                         const std::string& textPattern) {
    const Timing timing = runCheapCalls(task, makeCall);
    dropped.keepNext();
    makeCall(0)(12345);
    if (dropped.count() < 1000 || !std::regex_match(dropped.kept(), std::regex(textPattern))) {
        throw std::runtime_error("the appender did not get the messages: " + dropped.kept());
    }
    printFigure("call_ns", timing.nanosecondsPerCall);
}

/// Calls that return when their line is in the file.
/// \param messages of all threads together
/// \param file returns the name of the file once it exists
template <typename MakeCall>
void measureWritingCalls(const Task& task, std::size_t messages, MakeCall makeCall,
                         const std::function<std::string()>& file, const FileFormat& format = FileFormat()) {
    const Calls calls = callsOfAllThreads(task, messages);
    const Timing timing = runThreads(task.threads, calls, makeCall);
    FileCheck(file(), format).expectMessages(calls.total() * task.threads);
    printFigure("message_ns", timing.nanosecondsPerMessage);
}

template <typename MakeCall>
void measureSynchronous(const Task& task, MakeCall makeCall, const FileFormat& format = FileFormat()) {
    measureWritingCalls(
        task, SYNCHRONOUS_MESSAGES, makeCall, [&task] { return task.file(); }, format);
}

/// Waits until a file has grown to a size.
/// \return when it has reached it
inline Clock::time_point waitForSize(const std::string& path, std::size_t size) {
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(60);
    while (fileSize(path) < size) {
        if (Clock::now() > deadline) {
            throw std::runtime_error(path + " did not get all lines");
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return Clock::now();
}

inline std::size_t lengthOfFirstLine(const std::string& path) {
    std::ifstream stream(path);
    std::string line;
    std::getline(stream, line);
    return line.size() + 1;
}

/// Calls that hand their message over to another thread, which writes it. All lines have the same length, so
/// the size of the file shows when the last one has arrived, without reads that would slow the writer down.
template <typename MakeCall>
void measureAsynchronous(const Task& task, MakeCall makeCall, const std::string& file,
                         const FileFormat& format = FileFormat()) {
    const Calls calls = callsOfAllThreads(task, ASYNCHRONOUS_MESSAGES);
    std::size_t lineLength = 0;
    double cpuStart = 0;
    const auto waitForWarmUp = [&] {
        waitForSize(file, 1);
        lineLength = lengthOfFirstLine(file);
        waitForSize(file, calls.warmUp * task.threads * lineLength);
        cpuStart = cpuNanoseconds();
    };
    const Timing timing = runThreads(task.threads, calls, makeCall, waitForWarmUp);
    const Clock::time_point end = waitForSize(file, calls.total() * task.threads * lineLength);
    const double cpuEnd = cpuNanoseconds();
    const std::size_t peakMemory = peakMemoryKilobytes();
    FileCheck(file, format).expectMessages(calls.total() * task.threads);
    const double messages = static_cast<double>(calls.measured * task.threads);
    printFigure("producer_ns", timing.nanosecondsPerCall);
    printFigure("end_to_end_ns", nanosecondsBetween(timing.start, end) / messages);
    printFigure("cpu_ns", (cpuEnd - cpuStart) / messages);
    printFigure("peak_kb", static_cast<double>(peakMemory));
}

/// Calls that return when their line is in one of the rotated files. A quick run is not smaller, since files
/// must be created and deleted in it.
template <typename MakeCall>
void measureRotation(const Task& task, MakeCall makeCall) {
    const Calls calls = callsOfAllThreads({task.threads, task.folder, 1}, ROTATED_MESSAGES);
    const Timing timing = runThreads(task.threads, calls, makeCall);
    RotatedFiles(task.folder, FileFormat()).expect(calls.total() * task.threads, ROTATION_FILES);
    printFigure("message_ns", timing.nanosecondsPerMessage);
}

/// Rendering of a line, without a file.
/// \param render renders a message for a count, and returns a reference to or a view of the line
template <typename Render>
void measureRendering(const Task& task, const std::string& pattern, Render render) {
    const std::string first(render(0));
    const std::string line = first.substr(0, first.find('\n'));
    if (!std::regex_match(line, std::regex(pattern))) {
        throw std::runtime_error("a line of a wrong layout: " + line);
    }
    const Calls calls = callsPerThread(task, RENDERED_MESSAGES);
    std::size_t rendered = 0;
    const auto makeCall = [&](std::size_t) { return [&](std::size_t i) { rendered += render(i).size(); }; };
    const Timing timing = runThreads(1, calls, makeCall);
    if (rendered != first.size() * calls.total()) {
        throw std::runtime_error("lines of different lengths");
    }
    printFigure("call_ns", timing.nanosecondsPerCall);
}

/// How many different messages a rendering loop cycles through. They are a millisecond apart, so that a
/// renderer may reuse the previous one's date and second, as in an application.
constexpr std::size_t RENDERED_RING = 256;

using Workload = std::function<void(const Task&)>;
using Workloads = std::map<std::string, Workload>;

/// The main function of all programs: "<program> list" prints the workloads that a logger supports,
/// "<program> <workload> <threads> <folder> [divisor]" runs one.
inline int runWorkloads(int argc, char** argv, const Workloads& workloads) {
    if (argc == 2 && std::string(argv[1]) == "list") {
        for (const auto& workload : workloads) {
            std::printf("%s\n", workload.first.c_str());
        }
        return 0;
    }
    const auto workload = argc < 4 ? workloads.end() : workloads.find(argv[1]);
    if (workload == workloads.end()) {
        std::fprintf(stderr, "usage: %s list | <workload> <threads> <folder> [divisor]\n", argv[0]);
        return 2;
    }
    try {
        const std::size_t divisor = argc < 5 ? 1 : std::stoul(argv[4]);
        workload->second({std::stoul(argv[2]), argv[3], divisor});
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s: %s\n", argv[0], exception.what());
        return 1;
    }
    return 0;
}

} // namespace Bench
