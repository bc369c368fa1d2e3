#include "SampleMessage.h"

#include "log/filters/MessageFilters.h"

#include <benchmark/benchmark.h>

namespace {

using namespace ZAV::Log;
using namespace ZAV::Util::TimeUtils;

void ask(benchmark::State& state, MessageFilter& filter) {
    const LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        benchmark::DoNotOptimize(filter.accept(message));
    }
}

void filterLogger(benchmark::State& state) {
    FilterLogger filter({"app.", "db.pool", "db.session", "net."});
    ask(state, filter);
}

void filterLogLevel(benchmark::State& state) {
    FilterLogLevel filter(Level::LEVEL_WARNING);
    ask(state, filter);
}

void filterMessageType(benchmark::State& state) {
    FilterMessageType filter(LOG);
    ask(state, filter);
}

void filterLogLevelDynamic(benchmark::State& state) {
    FilterLogLevelDynamic filter(Level::LEVEL_WARNING, Time(1, DAY));
    ask(state, filter);
}

/// Each message has to check whether the lowered level has expired.
void filterLogLevelLowered(benchmark::State& state) {
    FilterLogLevelDynamic filter(Level::LEVEL_WARNING, Time(1, DAY));
    filter.onCommand("DEBUG");
    ask(state, filter);
}

} // namespace

BENCHMARK(filterLogger);
BENCHMARK(filterLogLevel);
BENCHMARK(filterLogLevelDynamic);
BENCHMARK(filterLogLevelLowered);
BENCHMARK(filterMessageType);
