#pragma once

#include "log/Appender.h"

#include <benchmark/benchmark.h>

namespace Bench {

/// Writes nothing, so that only the path to an appender is measured.
class IdleAppender : public ZAV::Log::Appender {
public:
    using Appender::Appender;

protected:
    void doOutput(const ZAV::Log::LogMessage& message) override { benchmark::DoNotOptimize(&message); }
};

} // namespace Bench
