// log4cplus: milliseconds and three zeros are cheaper for it than microseconds. Its asynchronous queue is
// always bounded; here it has room for all messages.

#include "Latency.h"
#include "ThreadMemory.h"

#include <log4cplus/asyncappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Bench;
using log4cplus::Logger;
using log4cplus::SharedAppenderPtr;

constexpr bool FLUSH_EVERY_LINE = true;

std::unique_ptr<log4cplus::Layout> makeLayout(const std::string& process = std::string()) {
    return std::make_unique<log4cplus::PatternLayout>("%D{%Y.%m.%d %H:%M:%S:%q000}" + process +
                                                      " %c %F:%L %p %m%n");
}

SharedAppenderPtr makeFileAppender(const Task& task) {
    SharedAppenderPtr appender(
        new log4cplus::FileAppender(task.file(), std::ios_base::trunc, FLUSH_EVERY_LINE));
    appender->setLayout(makeLayout());
    return appender;
}

void attach(const SharedAppenderPtr& appender, log4cplus::LogLevel level = log4cplus::INFO_LOG_LEVEL) {
    Logger root = Logger::getRoot();
    root.addAppender(appender);
    root.setLogLevel(level);
}

void logLine(const Logger& logger, const std::string& text) {
    logger.log(log4cplus::INFO_LOG_LEVEL, text, SampleLine::SOURCE_FILE, SampleLine::SOURCE_LINE);
}

auto loggingCall(const std::string& loggerName) {
    return [logger = Logger::getInstance(loggerName), text = std::string(SampleLine::TEXT)](std::size_t) {
        logLine(logger, text);
    };
}

auto callOfSharedLogger(std::size_t) {
    return loggingCall(SampleLine::sharedLoggerName());
}

auto callOfOwnLogger(std::size_t thread) {
    return loggingCall(SampleLine::ownLoggerName(thread));
}

auto streamedCall(std::size_t = 0) {
    return [logger = Logger::getInstance(SampleLine::sharedLoggerName())](std::size_t i) {
        LOG4CPLUS_INFO(logger, "user " << i << " left after " << static_cast<double>(i) * 0.25 << " s from "
                                       << "10.0.0.1");
    };
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    attach(makeFileAppender(task), log4cplus::WARN_LOG_LEVEL);
    const auto logAccepted = [] {
        Logger::getRoot().setLogLevel(log4cplus::INFO_LOG_LEVEL);
        callOfSharedLogger(0)(0);
    };
    measureRejectedCalls(task, makeCall, logAccepted, [&task] { return task.file(); });
}

void rejectedFunction(const Task& task) {
    measureRejected(task, callOfOwnLogger);
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](std::size_t thread) {
        return [logger = Logger::getInstance(SampleLine::ownLoggerName(thread))](std::size_t id) {
            LOG4CPLUS_INFO(logger, "user " << id << " left");
        };
    });
}

void ownLoggers(const Task& task) {
    attach(makeFileAppender(task));
    measureSynchronous(task, callOfOwnLogger);
}

void sharedLogger(const Task& task) {
    attach(makeFileAppender(task));
    measureSynchronous(task, callOfSharedLogger);
}

void attachQueue(const Task& task) {
    const auto room = static_cast<unsigned>(asynchronousMessages(task));
    attach(SharedAppenderPtr(new log4cplus::AsyncAppender(makeFileAppender(task), room)));
}

template <typename MakeCall>
void measureQueue(const Task& task, MakeCall makeCall) {
    attachQueue(task);
    measureAsynchronous(task, makeCall, task.file());
}

void asynchronousOwnLoggers(const Task& task) {
    measureQueue(task, callOfOwnLogger);
}

void asynchronousSharedLogger(const Task& task) {
    measureQueue(task, callOfSharedLogger);
}

class DroppingAppender : public log4cplus::Appender {
public:
    explicit DroppingAppender(DroppedMessages& dropped) : dropped_(dropped) {}
    ~DroppingAppender() override { destructorImpl(); }
    void close() override {}

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        dropped_.add(event.getMessage());
    }

private:
    DroppedMessages& dropped_;
};

template <typename MakeCall>
void measureDropped(const Task& task, MakeCall makeCall, const std::string& textPattern) {
    DroppedMessages dropped;
    attach(SharedAppenderPtr(new DroppingAppender(dropped)));
    measureDroppedCalls(task, makeCall, dropped, textPattern);
    Logger::getRoot().removeAllAppenders();
}

void droppedText(const Task& task) {
    measureDropped(task, callOfSharedLogger, SampleLine::TEXT);
}

void droppedStreamed(const Task& task) {
    measureDropped(task, streamedCall, SampleLine::VALUES_TEXT_PATTERN);
}

void burst(const Task& task) {
    attachQueue(task);
    measureBurst(task, streamedCall, task.file());
}

void seldom(const Task& task) {
    attachQueue(task);
    measureThreadMemory(task, streamedCall, task.file());
}

Workload latency(const Rhythm& rhythm) {
    return [&rhythm](const Task& task) {
        attachQueue(task);
        measureLatency(task, rhythm, streamedCall(), task.file());
    };
}

void rotation(const Task& task) {
    SharedAppenderPtr appender(
        new log4cplus::RollingFileAppender(task.file(), static_cast<long>(ROTATION_BYTES),
                                           static_cast<int>(ROTATION_FILES - 1), FLUSH_EVERY_LINE));
    appender->setLayout(makeLayout());
    attach(appender);
    measureRotation(task, callOfSharedLogger);
}

using Event = log4cplus::spi::InternalLoggingEvent;

std::vector<std::unique_ptr<Event>> makeEvents() {
    std::vector<std::unique_ptr<Event>> events;
    for (std::size_t i = 0; i < RENDERED_RING; ++i) {
        events.push_back(std::make_unique<Event>(SampleLine::sharedLoggerName(), log4cplus::INFO_LOG_LEVEL,
                                                 SampleLine::TEXT, SampleLine::SOURCE_FILE,
                                                 SampleLine::SOURCE_LINE));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return events;
}

void measureLayout(const Task& task, const std::string& process, const std::string& pattern) {
    const auto layout = makeLayout(process);
    const auto events = makeEvents();
    std::ostringstream stream;
    std::string line;
    measureRendering(task, pattern, [&](std::size_t i) -> const std::string& {
        stream.str(std::string());
        layout->formatAndAppend(stream, *events[i % RENDERED_RING]);
        line = stream.str();
        return line;
    });
}

void rendering(const Task& task) {
    measureLayout(task, "", SampleLine::pattern());
}

void renderingWithProcess(const Task& task) {
    measureLayout(task, " compare_log4cplus %i %h", SampleLine::patternWithProcess());
}

} // namespace

int main(int argc, char** argv) {
    const log4cplus::Initializer initializer;
    return runWorkloads(argc, argv,
                        {{"rejected-function", rejectedFunction},
                         {"rejected-macro", rejectedMacro},
                         {"sync-own", ownLoggers},
                         {"sync-shared", sharedLogger},
                         {"async-own", asynchronousOwnLoggers},
                         {"async-shared", asynchronousSharedLogger},
                         {"dropped-text", droppedText},
                         {"dropped-streamed", droppedStreamed},
                         {"burst-streamed", burst},
                         {"latency-bursts", latency(BURSTS)},
                         {"latency-bursts-prompt", latency(BURSTS)},
                         {"latency-spaced", latency(SPACED)},
                         {"latency-spaced-prompt", latency(SPACED)},
                         {"seldom", seldom},
                         {"rotation", rotation},
                         {"rendering", rendering},
                         {"rendering-process", renderingWithProcess}});
}
