#include "IdleAppender.h"
#include "SampleMessage.h"

#include "log/LogMacros.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace ZAV::Log;
using Bench::IdleAppender;

/// The overhead between a logger and an appender's own work.
void appenderOutput(benchmark::State& state) {
    IdleAppender appender("idle");
    const LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        appender.output(message);
    }
}

void acceptedCall(benchmark::State& state) {
    Logger& logger = LoggerFactory::getLogger("accepting");
    logger.setLevel(Level::LEVEL_INFO, false);
    IdleAppender appender("idle");
    logger.addAppender(&appender);
    const std::string text = "connected to the backend server, request 12345";
    const std::string file = "Socket.cpp";
    for (auto _ : state) {
        logger.info(text, 120, file);
    }
    logger.removeAppender(&appender);
}

void rejectedCall(benchmark::State& state) {
    Logger& logger = LoggerFactory::getLogger("rejecting");
    logger.setLevel(Level::LEVEL_WARNING, false);
    const std::string text = "connected to the backend server, request 12345";
    const std::string file = "Socket.cpp";
    for (auto _ : state) {
        logger.info(text, 120, file);
        benchmark::ClobberMemory();
    }
}

void rejectedMacro(benchmark::State& state) {
    Logger& logger = LoggerFactory::getLogger("rejecting");
    logger.setLevel(Level::LEVEL_WARNING, false);
    int id = 0;
    for (auto _ : state) {
        ZAV_LOG_INFO(logger, "user " << ++id << " left");
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(appenderOutput);
BENCHMARK(acceptedCall);
BENCHMARK(rejectedCall);
BENCHMARK(rejectedMacro);
