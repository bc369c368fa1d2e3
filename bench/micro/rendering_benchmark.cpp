#include "SampleMessage.h"

#include "log/LogLine.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "zav-util/TimeText.h"
#include "zav-util/TimeUtils.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace {

using namespace ZAV::Util::TimeUtils;

/// As an application requests a line.
void formatLine(benchmark::State& state) {
    const ZAV::Log::LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZAV::Log::formatLogLine(message));
    }
}

void formatLineWithProcess(benchmark::State& state) {
    const ZAV::Log::LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZAV::Log::formatLogLineWithProcess(message));
    }
}

/// As an appender renders successive lines.
void appendLine(benchmark::State& state) {
    const ZAV::Log::LogMessage message = Bench::makeMessage();
    std::string line;
    for (auto _ : state) {
        line.clear();
        ZAV::Log::appendLogLine(line, message);
        benchmark::DoNotOptimize(line.data());
    }
}

void writeTimes(benchmark::State& state, std::uint64_t step, TimeUnit unit) {
    Time time = Time::now();
    char text[TIME_LENGTH];
    for (auto _ : state) {
        time = time + Time(step, unit);
        writeTime(text, time);
        benchmark::DoNotOptimize(text);
        benchmark::ClobberMemory();
    }
}

void timeInOneSecond(benchmark::State& state) {
    writeTimes(state, 1, USEC);
}

/// No two times share a second, so its cached text is never reused.
void timeInEverySecond(benchmark::State& state) {
    writeTimes(state, 1, SEC);
}

} // namespace

BENCHMARK(formatLine);
BENCHMARK(formatLineWithProcess);
BENCHMARK(appendLine);
BENCHMARK(timeInOneSecond);
BENCHMARK(timeInEverySecond);
