#include "SampleMessage.h"

#include "log/filters/FilterLogLevel.h"
#include "log/filters/FilterLogLevelDynamic.h"
#include "log/filters/FilterLogger.h"
#include "log/filters/FilterMessageType.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace ZAV::Log;

ZAV::Util::Properties filterProperties() {
    ZAV::Util::Properties properties;
    properties["appender.x.filters"] = "app. db.pool db.session net.";
    properties["appender.x.level"] = "WARNING";
    properties["appender.x.expiration"] = "1 day";
    properties["appender.x.message_type"] = "LOG";
    return properties;
}

void ask(benchmark::State& state, MessageFilter& filter) {
    const LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        benchmark::DoNotOptimize(filter.accept(message));
    }
}

template <typename Filter>
void filter(benchmark::State& state) {
    Filter filter("x", filterProperties());
    ask(state, filter);
}

/// Each message must see whether the lowered level has expired.
void filterLogLevelLowered(benchmark::State& state) {
    FilterLogLevelDynamic filter("x", filterProperties());
    filter.onCommand("DEBUG");
    ask(state, filter);
}

} // namespace

BENCHMARK(filter<FilterLogger>);
BENCHMARK(filter<FilterLogLevel>);
BENCHMARK(filter<FilterLogLevelDynamic>);
BENCHMARK(filterLogLevelLowered);
BENCHMARK(filter<FilterMessageType>);
