#include "log/LoggerFactory.h"
#include "log/MessageInserter.h"
#include "log/text/ValueText.h"

#include <benchmark/benchmark.h>

#include <charconv>

namespace {

using namespace ZAV::Log;

void streamedText(benchmark::State& state) {
    const Logger& logger = LoggerFactory::getLogger("streamed");
    int i = 0;
    for (auto _ : state) {
        MessageStream message(logger);
        MessageInserter(message) << "user " << i << " left after " << i * 0.25 << " s from "
                                 << "10.0.0.1";
        benchmark::ClobberMemory();
        i = (i + 1) % 1000000;
    }
}

/// Quarters up to 250000: some of them have more than six digits.
template <typename Write>
void writeNumbers(benchmark::State& state, Write write) {
    char text[GENERAL_FLOAT_SIZE];
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(text, i * 0.25));
        benchmark::ClobberMemory();
        i = (i + 1) % 1000000;
    }
}

void generalFloat(benchmark::State& state) {
    writeNumbers(state, writeGeneralFloat);
}

/// The alternative to `generalFloat`.
void generalFloatByToChars(benchmark::State& state) {
    writeNumbers(state, [](char* text, double number) {
        return std::to_chars(text, text + GENERAL_FLOAT_SIZE, number, std::chars_format::general, 6).ptr;
    });
}

} // namespace

BENCHMARK(streamedText);
BENCHMARK(generalFloat);
BENCHMARK(generalFloatByToChars);
