// ZAV Log itself.

#include "Latency.h"
#include "ThreadMemory.h"
#include "ZavSetup.h"

#include "log/Appender.h"
#include "log/LogContext.h"
#include "log/LogFormat.h"
#include "log/LogLine.h"
#include "log/LogMacros.h"
#include "log/LogMessage.h"
#include "log/LogValues.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Bench;
using ZAV::Log::Logger;
using ZAV::Log::LoggerFactory;
using ZAV::Log::LogMessage;
using ZAV::Util::Properties;

const std::string TEXT = SampleLine::TEXT;
const std::string SOURCE_FILE = SampleLine::SOURCE_FILE;

auto loggingCall(const std::string& loggerName) {
    return [&logger = LoggerFactory::getLogger(loggerName)](std::size_t) {
        logger.info(TEXT, SampleLine::SOURCE_LINE, SOURCE_FILE);
    };
}

auto callOfSharedLogger(std::size_t) {
    return loggingCall(SampleLine::sharedLoggerName());
}

auto callOfOwnLogger(std::size_t thread) {
    return loggingCall(SampleLine::ownLoggerName(thread));
}

auto streamedCall(std::size_t = 0) {
    return [&logger = LoggerFactory::getLogger(SampleLine::sharedLoggerName())](std::size_t i) {
        ZAV_LOG_INFO(logger, "user " << i << " left after " << static_cast<double>(i) * 0.25 << " s from "
                                     << "10.0.0.1");
    };
}

auto formattingCall(const std::string& loggerName) {
    return [&logger = LoggerFactory::getLogger(loggerName)](std::size_t i) {
        ZAV_LOGF_INFO(logger, "user {} left after {} s from {}", i, static_cast<double>(i) * 0.25,
                      "10.0.0.1");
    };
}

auto formattedCall(std::size_t) {
    return formattingCall(SampleLine::sharedLoggerName());
}

auto formattedCallOfOwnLogger(std::size_t thread) {
    return formattingCall(SampleLine::ownLoggerName(thread));
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    Properties properties = fileProperties(task);
    properties["logger.root.level"] = "WARNING";
    const Library library(properties);
    const auto logAccepted = [] {
        LoggerFactory::getRootLogger().setLevel(ZAV::Log::Level::LEVEL_INFO, false);
        callOfSharedLogger(0)(0);
    };
    measureRejectedCalls(task, makeCall, logAccepted, [&task] { return liveFile(task); });
}

void rejectedFunction(const Task& task) {
    measureRejected(task, callOfOwnLogger);
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](std::size_t thread) {
        return [&logger = LoggerFactory::getLogger(SampleLine::ownLoggerName(thread))](std::size_t id) {
            ZAV_LOG_INFO(logger, "user " << id << " left");
        };
    });
}

template <typename MakeCall>
void measureFile(const Task& task, MakeCall makeCall) {
    const Library library(fileProperties(task));
    measureWritingCalls(task, SYNCHRONOUS_MESSAGES, makeCall, [&task] { return liveFile(task); });
}

void ownLoggers(const Task& task) {
    measureFile(task, callOfOwnLogger);
}

void sharedLogger(const Task& task) {
    measureFile(task, callOfSharedLogger);
}

Workload queue(Properties (*properties)(const Task&),
               decltype(callOfSharedLogger(0)) (*makeCall)(std::size_t)) {
    return [properties, makeCall](const Task& task) {
        const Library library(properties(task));
        measureAsynchronous(task, makeCall, liveFile(task));
    };
}

struct Request {
    const ZAV::Log::LogContext request{"request", "r1"};
    const ZAV::Log::LogContext user{"user", 7};
};

/// The context is created once, as for a request with several messages.
auto callWithPairs(std::size_t) {
    return [&logger = LoggerFactory::getLogger(SampleLine::sharedLoggerName()),
            request = std::make_unique<const Request>()](std::size_t) {
        ZAV_LOGV_INFO(logger, "order charged", "order", 17, "amount", 4.25, "customer", "ACME");
    };
}

void json(const Task& task) {
    const Library library(asJson(fileProperties(task)));
    measureWritingCalls(
        task, SYNCHRONOUS_MESSAGES, callWithPairs, [&task] { return liveFile(task); }, formatAsJson());
}

Workload jsonQueue(Properties (*properties)(const Task&)) {
    return [properties](const Task& task) {
        const Library library(asJson(properties(task)));
        measureAsynchronous(task, callWithPairs, liveFile(task), formatAsJson());
    };
}

void rotation(const Task& task) {
    const Library library(rotationProperties(task));
    measureRotation(task, callOfSharedLogger);
}

void reopenedFile(const Task& task) {
    Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.single"] = "SimpleFileAppender";
    properties["appender.single.dir"] = task.folder;
    properties["appender.single.file"] = "log";
    const Library library(properties);
    FileFormat format;
    format.pattern = SampleLine::patternWithProcess();
    measureWritingCalls(
        task, REOPENED_MESSAGES, callOfSharedLogger, [&task] { return task.file(); }, format);
}

class DroppingAppender : public ZAV::Log::Appender {
public:
    DroppingAppender() : Appender("dropping") {}
    DroppedMessages dropped;

protected:
    void doOutput(const LogMessage& message) override { dropped.add(message.getText()); }
};

template <typename MakeCall>
void measureDropped(const Task& task, MakeCall makeCall, const std::string& textPattern) {
    DroppingAppender appender;
    Logger& root = LoggerFactory::getRootLogger();
    root.setLevel(ZAV::Log::Level::LEVEL_INFO, false);
    root.addAppender(&appender);
    measureDroppedCalls(task, makeCall, appender.dropped, textPattern);
    root.removeAppender(&appender);
}

void droppedText(const Task& task) {
    measureDropped(task, callOfSharedLogger, SampleLine::TEXT);
}

void droppedStreamed(const Task& task) {
    measureDropped(task, streamedCall, SampleLine::VALUES_TEXT_PATTERN);
}

void droppedFormatted(const Task& task) {
    measureDropped(task, formattedCall, SampleLine::VALUES_TEXT_PATTERN);
}

void burstStreamed(const Task& task) {
    const Library library(asynchronousProperties(task));
    measureBurst(task, streamedCall, liveFile(task));
}

void burstFormatted(const Task& task) {
    const Library library(asynchronousProperties(task));
    measureBurst(task, formattedCall, liveFile(task));
}

std::string besideTheLog(const Task& task) {
    return task.folder + "/queue";
}

/// The figures' names say tmpfs, which this folder is on most systems.
std::string onTmpfs(const Task&) {
    return "/dev/shm/zav-log-compare.queue";
}

Workload keptBurst(std::string (*place)(const Task&)) {
    return [place](const Task& task) {
        const Library library(keptIn(place(task), asynchronousProperties(task)));
        measureBurst(task, formattedCall, liveFile(task));
    };
}

void burstFormattedOwnLoggers(const Task& task) {
    const Library library(asynchronousProperties(task));
    measureBurst(task, formattedCallOfOwnLogger, liveFile(task));
}

void seldom(const Task& task) {
    const Library library(asynchronousProperties(task));
    measureThreadMemory(task, formattedCall, liveFile(task));
}

Workload latency(const Rhythm& rhythm, Properties (*properties)(const Task&)) {
    return [&rhythm, properties](const Task& task) {
        const Library library(properties(task));
        measureLatency(task, rhythm, streamedCall(), liveFile(task));
    };
}

Workload keptLatency(std::string (*place)(const Task&)) {
    return [place](const Task& task) {
        const Library library(keptIn(place(task), unhurriedProperties(task)));
        measureLatency(task, SPACED, streamedCall(), liveFile(task));
    };
}

std::vector<LogMessage> makeMessages() {
    using ZAV::Util::TimeUtils::MSEC;
    using ZAV::Util::TimeUtils::Time;
    std::vector<LogMessage> messages;
    const Time now = Time::now();
    for (std::uint64_t i = 0; i < RENDERED_RING; ++i) {
        messages.emplace_back(SampleLine::sharedLoggerName(), now + Time(i, MSEC),
                              ZAV::Log::Level::LEVEL_INFO, TEXT, SampleLine::SOURCE_LINE, SOURCE_FILE,
                              ZAV::Log::LOG);
    }
    return messages;
}

template <typename Format>
void measureFormat(const Task& task, const std::string& pattern, Format format) {
    const std::vector<LogMessage> messages = makeMessages();
    measureRendering(task, pattern, [&](std::size_t i) { return format(messages[i % RENDERED_RING]); });
}

void rendering(const Task& task) {
    measureFormat(task, SampleLine::pattern(), ZAV::Log::formatLogLine);
}

void renderingWithProcess(const Task& task) {
    measureFormat(task, SampleLine::patternWithProcess(), ZAV::Log::formatLogLineWithProcess);
}

} // namespace

int main(int argc, char** argv) {
    return runWorkloads(argc, argv,
                        {{"rejected-function", rejectedFunction},
                         {"rejected-macro", rejectedMacro},
                         {"sync-own", ownLoggers},
                         {"sync-shared", sharedLogger},
                         {"async-own", queue(asynchronousProperties, callOfOwnLogger)},
                         {"async-shared", queue(asynchronousProperties, callOfSharedLogger)},
                         {"async-batch-own", queue(batchProperties, callOfOwnLogger)},
                         {"async-batch-shared", queue(batchProperties, callOfSharedLogger)},
                         {"dropped-text", droppedText},
                         {"dropped-streamed", droppedStreamed},
                         {"dropped-formatted", droppedFormatted},
                         {"burst-streamed", burstStreamed},
                         {"burst-formatted", burstFormatted},
                         {"burst-formatted-own", burstFormattedOwnLoggers},
                         {"latency-bursts", latency(BURSTS, unhurriedProperties)},
                         {"latency-bursts-prompt", latency(BURSTS, asynchronousProperties)},
                         {"latency-spaced", latency(SPACED, unhurriedProperties)},
                         {"latency-spaced-prompt", latency(SPACED, asynchronousProperties)},
                         {"kept-tmpfs", keptBurst(onTmpfs)},
                         {"kept-beside", keptBurst(besideTheLog)},
                         {"latency-spaced-tmpfs", keptLatency(onTmpfs)},
                         {"latency-spaced-beside", keptLatency(besideTheLog)},
                         {"seldom", seldom},
                         {"json-sync", json},
                         {"json-async", jsonQueue(asynchronousProperties)},
                         {"json-async-batch", jsonQueue(batchProperties)},
                         {"rotation", rotation},
                         {"rendering", rendering},
                         {"rendering-process", renderingWithProcess},
                         {"reopen", reopenedFile}});
}
