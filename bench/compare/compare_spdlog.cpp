// spdlog; see SpdlogSetup.h for its configuration.

#include "Latency.h"
#include "SpdlogSetup.h"
#include "ThreadMemory.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Bench;
void logLine(spdlog::logger& logger, const std::string& text) {
    logger.log(LOCATION, spdlog::level::info, spdlog::string_view_t(text));
}

auto loggingCall(const LoggerPointer& logger) {
    return [logger, text = std::string(SampleLine::TEXT)](std::size_t) { logLine(*logger, text); };
}

auto formattedCall(const LoggerPointer& logger) {
    return [logger](std::size_t i) {
        SPDLOG_LOGGER_INFO(logger, "user {} left after {} s from {}", i, static_cast<double>(i) * 0.25,
                           "10.0.0.1");
    };
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    const auto sink = makeFileSink(task);
    std::vector<LoggerPointer> loggers;
    for (std::size_t i = 0; i < task.threads; ++i) {
        loggers.push_back(makeLogger(SampleLine::ownLoggerName(i), sink));
        loggers.back()->set_level(spdlog::level::warn);
    }
    const auto logAccepted = [&loggers] {
        loggers.front()->set_level(spdlog::level::info);
        logLine(*loggers.front(), SampleLine::TEXT);
    };
    measureRejectedCalls(
        task, [&](std::size_t thread) { return makeCall(loggers[thread]); }, logAccepted,
        [&task] { return task.file(); });
}

void rejectedFunction(const Task& task) {
    measureRejected(task, loggingCall);
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](const LoggerPointer& logger) {
        return [logger](std::size_t id) { SPDLOG_LOGGER_INFO(logger, "user {} left", id); };
    });
}

void ownLoggers(const Task& task) {
    const auto sink = makeFileSink(task);
    measureSynchronous(task, [&sink](std::size_t thread) {
        return loggingCall(makeLogger(SampleLine::ownLoggerName(thread), sink));
    });
}

void sharedLogger(const Task& task) {
    const LoggerPointer logger = makeLogger(SampleLine::sharedLoggerName(), makeFileSink(task));
    measureSynchronous(task, [&logger](std::size_t) { return loggingCall(logger); });
}

void asynchronousOwnLoggers(const Task& task) {
    const Queue queue(task);
    std::vector<LoggerPointer> loggers;
    for (std::size_t i = 0; i < task.threads; ++i) {
        loggers.push_back(queue.makeLogger(SampleLine::ownLoggerName(i)));
    }
    measureAsynchronous(
        task, [&](std::size_t thread) { return loggingCall(loggers[thread]); }, task.file());
}

void asynchronousSharedLogger(const Task& task) {
    const Queue queue(task);
    const LoggerPointer logger = queue.makeLogger(SampleLine::sharedLoggerName());
    measureAsynchronous(
        task, [&logger](std::size_t) { return loggingCall(logger); }, task.file());
}

class DroppingSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    DroppedMessages dropped;

protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        dropped.add(std::string_view(message.payload.data(), message.payload.size()));
    }
    void flush_() override {}
};

template <typename MakeCall>
void measureDropped(const Task& task, MakeCall makeCall, const std::string& textPattern) {
    const auto sink = std::make_shared<DroppingSink>();
    const LoggerPointer logger = makeLogger(SampleLine::sharedLoggerName(), sink);
    logger->flush_on(spdlog::level::off);
    measureDroppedCalls(
        task, [&](std::size_t) { return makeCall(logger); }, sink->dropped, textPattern);
}

void droppedText(const Task& task) {
    measureDropped(task, loggingCall, SampleLine::TEXT);
}

void droppedFormatted(const Task& task) {
    measureDropped(task, formattedCall, SampleLine::VALUES_TEXT_PATTERN);
}

void burst(const Task& task) {
    const Queue queue(task);
    const LoggerPointer logger = queue.makeLogger(SampleLine::sharedLoggerName());
    measureBurst(
        task, [&logger](std::size_t) { return formattedCall(logger); }, task.file());
}

void burstOwnLoggers(const Task& task) {
    const Queue queue(task);
    measureBurst(
        task,
        [&queue](std::size_t thread) {
            return formattedCall(queue.makeLogger(SampleLine::ownLoggerName(thread)));
        },
        task.file());
}

void seldom(const Task& task) {
    const Queue queue(task);
    const LoggerPointer logger = queue.makeLogger(SampleLine::sharedLoggerName());
    measureThreadMemory(
        task, [&logger](std::size_t) { return formattedCall(logger); }, task.file());
}

Workload latency(const Rhythm& rhythm) {
    return [&rhythm](const Task& task) {
        const Queue queue(task);
        measureLatency(task, rhythm, formattedCall(queue.makeLogger(SampleLine::sharedLoggerName())),
                       task.file());
    };
}

void rotation(const Task& task) {
    const auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(task.file(), ROTATION_BYTES,
                                                                             ROTATION_FILES - 1);
    const LoggerPointer logger = makeLogger(SampleLine::sharedLoggerName(), sink);
    measureRotation(task, [&logger](std::size_t) { return loggingCall(logger); });
}

std::vector<spdlog::details::log_msg> makeMessages(spdlog::string_view_t loggerName) {
    std::vector<spdlog::details::log_msg> messages;
    const auto now = spdlog::log_clock::now();
    for (std::size_t i = 0; i < RENDERED_RING; ++i) {
        messages.emplace_back(now + std::chrono::milliseconds(i), LOCATION, loggerName, spdlog::level::info,
                              SampleLine::TEXT);
    }
    return messages;
}

void measureFormatter(const Task& task, const std::string& process, const std::string& pattern) {
    const auto formatter = makeFormatter(process);
    const std::string loggerName = SampleLine::sharedLoggerName();
    const auto messages = makeMessages(loggerName);
    spdlog::memory_buf_t line;
    measureRendering(task, pattern, [&](std::size_t i) {
        line.clear();
        formatter->format(messages[i % RENDERED_RING], line);
        return std::string_view(line.data(), line.size());
    });
}

void rendering(const Task& task) {
    measureFormatter(task, "", SampleLine::pattern());
}

void renderingWithProcess(const Task& task) {
    measureFormatter(task, " compare_spdlog %P " + hostName(), SampleLine::patternWithProcess());
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"rejected-function", rejectedFunction},
                         {"rejected-macro", rejectedMacro},
                         {"sync-own", ownLoggers},
                         {"sync-shared", sharedLogger},
                         {"async-own", asynchronousOwnLoggers},
                         {"async-shared", asynchronousSharedLogger},
                         {"dropped-text", droppedText},
                         {"dropped-streamed", droppedFormatted},
                         {"dropped-formatted", droppedFormatted},
                         {"burst-streamed", burst},
                         {"burst-formatted", burst},
                         {"burst-formatted-own", burstOwnLoggers},
                         {"latency-bursts", latency(BURSTS)},
                         {"latency-bursts-prompt", latency(BURSTS)},
                         {"latency-spaced", latency(SPACED)},
                         {"latency-spaced-prompt", latency(SPACED)},
                         {"seldom", seldom},
                         {"rotation", rotation},
                         {"rendering", rendering},
                         {"rendering-process", renderingWithProcess}});
}
