#include "log/Logger.h"
#include "log/LoggerFactory.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using ZAV::Log::LoggerFactory;

const char* const NAMES[] = {"net", "net.server.tcp", "net.server.tcp.connection.reader"};

/// Creates a logger and siblings at each level of its path, among which it must be found.
std::string makeLoggers(benchmark::State& state) {
    const std::string name = NAMES[state.range(0)];
    for (int i = 0; i < 20; ++i) {
        for (const char* parent : NAMES) {
            LoggerFactory::getLogger(parent + std::string(".sibling") + std::to_string(i));
        }
    }
    LoggerFactory::getLogger(name);
    state.SetLabel(name);
    return name;
}

void getLogger(benchmark::State& state) {
    const std::string name = makeLoggers(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(&LoggerFactory::getLogger(name));
    }
}

void loggerExists(benchmark::State& state) {
    const std::string name = makeLoggers(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(LoggerFactory::loggerExists(name));
    }
}

} // namespace

BENCHMARK(getLogger)->DenseRange(0, 2);
BENCHMARK(loggerExists)->DenseRange(0, 2);
