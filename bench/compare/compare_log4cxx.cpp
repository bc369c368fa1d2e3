// log4cxx: its time has milliseconds, so the pattern adds three zeros. It has no pattern for the process and
// the host: the layout contains them as text, its cheapest option. Its asynchronous queue is always bounded;
// here it has room for all messages.

#include "Latency.h"
#include "ThreadMemory.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/asyncappender.h>
#include <log4cxx/fileappender.h>
#include <log4cxx/helpers/pool.h>
#include <log4cxx/jsonlayout.h>
#include <log4cxx/logger.h>
#include <log4cxx/mdc.h>
#include <log4cxx/patternlayout.h>
#include <log4cxx/rolling/rollingfileappender.h>
#include <log4cxx/spi/loggingevent.h>

#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Bench;
using log4cxx::Logger;
using log4cxx::LoggerPtr;

const log4cxx::spi::LocationInfo LOCATION(SampleLine::SOURCE_FILE, SampleLine::SOURCE_FILE, "connect",
                                          SampleLine::SOURCE_LINE);

log4cxx::LayoutPtr makeLayout(const std::string& process = std::string()) {
    return std::make_shared<log4cxx::PatternLayout>("%d{yyyy.MM.dd HH:mm:ss:SSS}000" + process +
                                                    " %c %F:%L %p %m%n");
}

/// By default an appender flushes every line.
void configure(log4cxx::FileAppender& appender, const Task& task) {
    appender.setLayout(makeLayout());
    appender.setFile(task.file());
    appender.setEncoding("UTF-8"); // the only encoding that copies the text unchanged
}

void openFile(log4cxx::FileAppender& appender) {
    log4cxx::helpers::Pool pool;
    appender.activateOptions(pool);
}

log4cxx::AppenderPtr makeFileAppender(const Task& task, const log4cxx::LayoutPtr& layout = makeLayout()) {
    auto appender = std::make_shared<log4cxx::FileAppender>();
    configure(*appender, task);
    appender->setLayout(layout);
    openFile(*appender);
    return appender;
}

void attach(const log4cxx::AppenderPtr& appender,
            const log4cxx::LevelPtr& level = log4cxx::Level::getInfo()) {
    Logger::getRootLogger()->addAppender(appender);
    Logger::getRootLogger()->setLevel(level);
}

auto loggingCall(const std::string& loggerName) {
    return [logger = Logger::getLogger(loggerName), text = std::string(SampleLine::TEXT)](std::size_t) {
        logger->info(text, LOCATION);
    };
}

auto callOfSharedLogger(std::size_t) {
    return loggingCall(SampleLine::sharedLoggerName());
}

auto callOfOwnLogger(std::size_t thread) {
    return loggingCall(SampleLine::ownLoggerName(thread));
}

auto streamedCall(std::size_t = 0) {
    return [logger = Logger::getLogger(SampleLine::sharedLoggerName())](std::size_t i) {
        LOG4CXX_INFO(logger, "user " << i << " left after " << static_cast<double>(i) * 0.25 << " s from "
                                     << "10.0.0.1");
    };
}

template <typename MakeCall>
void measureRejected(const Task& task, MakeCall makeCall) {
    attach(makeFileAppender(task), log4cxx::Level::getWarn());
    const auto logAccepted = [] {
        Logger::getRootLogger()->setLevel(log4cxx::Level::getInfo());
        callOfSharedLogger(0)(0);
    };
    measureRejectedCalls(task, makeCall, logAccepted, [&task] { return task.file(); });
}

void rejectedFunction(const Task& task) {
    measureRejected(task, callOfOwnLogger);
}

void rejectedMacro(const Task& task) {
    measureRejected(task, [](std::size_t thread) {
        return [logger = Logger::getLogger(SampleLine::ownLoggerName(thread))](std::size_t id) {
            LOG4CXX_INFO(logger, "user " << id << " left");
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

void attachQueue(const Task& task, const log4cxx::LayoutPtr& layout = makeLayout()) {
    const auto appender = std::make_shared<log4cxx::AsyncAppender>();
    appender->addAppender(makeFileAppender(task, layout));
    appender->setBufferSize(static_cast<int>(asynchronousMessages(task)));
    attach(appender);
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

struct Request {
    const log4cxx::MDC request{"request", "r1"};
    const log4cxx::MDC user{"user", "7"};
};

/// It has no per-message values: members of its JSON are put into the thread's context for the call.
auto callWithPairs(std::size_t) {
    return [logger = Logger::getLogger(SampleLine::sharedLoggerName()),
            request = std::make_unique<const Request>()](std::size_t) {
        const log4cxx::MDC order("order", std::to_string(17));
        const log4cxx::MDC amount("amount", "4.25");
        const log4cxx::MDC customer("customer", "ACME");
        LOG4CXX_INFO(logger, "order charged");
    };
}

log4cxx::LayoutPtr makeJsonLayout() {
    const auto layout = std::make_shared<log4cxx::JSONLayout>();
    layout->setLocationInfo(true);
    return layout;
}

void json(const Task& task) {
    attach(makeFileAppender(task, makeJsonLayout()));
    measureSynchronous(task, callWithPairs, formatAsJson());
}

void jsonQueue(const Task& task) {
    attachQueue(task, makeJsonLayout());
    measureAsynchronous(task, callWithPairs, task.file(), formatAsJson());
}

class DroppingAppender : public log4cxx::AppenderSkeleton {
public:
    DroppedMessages dropped;

    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        dropped.add(event->getMessage());
    }
};

template <typename MakeCall>
void measureDropped(const Task& task, MakeCall makeCall, const std::string& textPattern) {
    const auto appender = std::make_shared<DroppingAppender>();
    attach(appender);
    measureDroppedCalls(task, makeCall, appender->dropped, textPattern);
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
    const auto appender = std::make_shared<log4cxx::rolling::RollingFileAppender>();
    configure(*appender, task);
    appender->setMaximumFileSize(ROTATION_BYTES);
    appender->setMaxBackupIndex(static_cast<int>(ROTATION_FILES - 1));
    openFile(*appender);
    attach(appender);
    measureRotation(task, callOfSharedLogger);
}

std::vector<log4cxx::spi::LoggingEventPtr> makeEvents() {
    std::vector<log4cxx::spi::LoggingEventPtr> events;
    for (std::size_t i = 0; i < RENDERED_RING; ++i) {
        events.push_back(std::make_shared<log4cxx::spi::LoggingEvent>(
            SampleLine::sharedLoggerName(), log4cxx::Level::getInfo(), SampleLine::TEXT, LOCATION));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return events;
}

void measureLayout(const Task& task, const std::string& process, const std::string& pattern) {
    const auto layout = makeLayout(process);
    const auto events = makeEvents();
    std::string line;
    measureRendering(task, pattern, [&](std::size_t i) -> const std::string& {
        log4cxx::helpers::Pool pool;
        line.clear();
        layout->format(line, events[i % RENDERED_RING], pool);
        return line;
    });
}

void rendering(const Task& task) {
    measureLayout(task, "", SampleLine::pattern());
}

void renderingWithProcess(const Task& task) {
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    measureLayout(task, " compare_log4cxx " + std::to_string(::getpid()) + " " + host,
                  SampleLine::patternWithProcess());
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
                         {"dropped-streamed", droppedStreamed},
                         {"burst-streamed", burst},
                         {"latency-bursts", latency(BURSTS)},
                         {"latency-bursts-prompt", latency(BURSTS)},
                         {"latency-spaced", latency(SPACED)},
                         {"latency-spaced-prompt", latency(SPACED)},
                         {"seldom", seldom},
                         {"json-sync", json},
                         {"json-async", jsonQueue},
                         {"rotation", rotation},
                         {"rendering", rendering},
                         {"rendering-process", renderingWithProcess}});
}
