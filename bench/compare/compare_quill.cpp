// quill; see QuillSetup.h for its configuration. Its macros copy the values and leave the rest to its backend
// thread; each keeps the call's source location in constant data.

#include "QuillSetup.h" // First, since it determines how the loop is compiled.

#include "Latency.h"
#include "ThreadMemory.h"

#include <quill/LogFunctions.h>
#include <quill/backend/PatternFormatter.h>
#include <quill/sinks/JsonSink.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace Bench;

auto formattedCall(quill::Logger* logger) {
    return [logger](std::size_t i) {
        LOG_INFO(logger, "user {} left after {} s from {}", i, static_cast<double>(i) * 0.25, "10.0.0.1");
    };
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    const QuillBackend<> backend(task, byDefault());
    quill::Logger* accepting = backend.makeLogger(SampleLine::sharedLoggerName());
    const auto logAccepted = [accepting] {
        formattedCall(accepting)(12345);
        accepting->flush_log();
    };
    const auto makeRejectedCall = [&](std::size_t thread) {
        quill::Logger* logger = backend.makeLogger(SampleLine::ownLoggerName(thread));
        logger->set_log_level(quill::LogLevel::Warning);
        return makeCall(logger);
    };
    measureRejectedCalls(
        task, makeRejectedCall, logAccepted, [&task] { return task.file(); }, formatWithValues());
}

void rejectedFunction(const Task& task) {
    measureRejected(task, [](quill::Logger* logger) {
        return
            [logger, text = std::string(SampleLine::TEXT)](std::size_t) { quill::info(logger, "{}", text); };
    });
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](quill::Logger* logger) {
        return [logger](std::size_t id) { LOG_INFO(logger, "user {} left", id); };
    });
}

void burst(const Task& task) {
    const QuillBackend<> backend(task, byDefault());
    quill::Logger* logger = backend.makeLogger(SampleLine::sharedLoggerName());
    measureBurst(
        task, [logger](std::size_t) { return formattedCall(logger); }, task.file());
}

void burstOwnLoggers(const Task& task) {
    const QuillBackend<> backend(task, byDefault());
    measureBurst(
        task,
        [&backend](std::size_t thread) {
            return formattedCall(backend.makeLogger(SampleLine::ownLoggerName(thread)));
        },
        task.file());
}

Workload latency(const Rhythm& rhythm, quill::BackendOptions (*options)()) {
    return [&rhythm, options](const Task& task) {
        const QuillBackend<> backend(task, options());
        measureLatency(task, rhythm, formattedCall(backend.makeLogger(SampleLine::sharedLoggerName())),
                       task.file());
    };
}

void seldom(const Task& task) {
    const QuillBackend<> backend(task, flushedWhenIdle());
    quill::Logger* logger = backend.makeLogger(SampleLine::sharedLoggerName());
    measureThreadMemory(
        task, [logger](std::size_t) { return formattedCall(logger); }, task.file());
}

void rendering(const Task& task) {
    static constexpr quill::MacroMetadata place("Socket.cpp:120", "connect", "{}", nullptr,
                                                quill::LogLevel::Info, quill::MacroMetadata::Event::Log);
    quill::PatternFormatter formatter(sampleLayout());
    const std::string loggerName = SampleLine::sharedLoggerName();
    const auto start = std::chrono::system_clock::now().time_since_epoch();
    const auto now = static_cast<std::uint64_t>(std::chrono::nanoseconds(start).count());
    measureRendering(task, SampleLine::pattern(), [&](std::size_t i) {
        return formatter.format(now + i % RENDERED_RING * 1'000'000, "1", "", "1", loggerName, "INFO", "I",
                                place, nullptr, SampleLine::TEXT, "");
    });
}

/// It has no context: its pairs are passed as values of each call, too.
void json(const Task& task) {
    const QuillBackend<quill::JsonFileSink> backend(task, flushedWhenIdle());
    quill::Logger* logger = backend.makeLogger(SampleLine::sharedLoggerName());
    const auto makeCall = [logger](std::size_t) {
        return [logger](std::size_t) {
            LOG_INFO(logger, "order charged {order} {amount} {customer} {request} {user}", 17, 4.25, "ACME",
                     "r1", 7);
        };
    };
    measureAsynchronous(task, makeCall, task.file(), formatAsJson());
}

// quill's macros show their own source location.
// clang-format off
#line 120 "Socket.cpp"
auto loggingCall(quill::Logger* logger) { return [logger, text = std::string(SampleLine::TEXT)](std::size_t) { LOG_INFO(logger, "{}", text); }; }
// clang-format on

void sharedLogger(const Task& task) {
    const QuillBackend<> backend(task, flushedWhenIdle());
    quill::Logger* logger = backend.makeLogger(SampleLine::sharedLoggerName());
    measureAsynchronous(
        task, [logger](std::size_t) { return loggingCall(logger); }, task.file());
}

void ownLoggers(const Task& task) {
    const QuillBackend<> backend(task, flushedWhenIdle());
    measureAsynchronous(
        task,
        [&backend](std::size_t thread) {
            return loggingCall(backend.makeLogger(SampleLine::ownLoggerName(thread)));
        },
        task.file());
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"rejected-function", rejectedFunction},
                         {"rejected-macro", rejectedMacro},
                         {"async-batch-own", ownLoggers},
                         {"async-batch-shared", sharedLogger},
                         {"json-async-batch", json},
                         {"burst-streamed", burst},
                         {"burst-formatted", burst},
                         {"burst-formatted-own", burstOwnLoggers},
                         {"latency-bursts", latency(BURSTS, byDefault)},
                         {"latency-bursts-prompt", latency(BURSTS, withoutSleep)},
                         {"latency-spaced", latency(SPACED, byDefault)},
                         {"latency-spaced-prompt", latency(SPACED, withoutSleep)},
                         {"seldom", seldom},
                         {"rendering", rendering}});
}
