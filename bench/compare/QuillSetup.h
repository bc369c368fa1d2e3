#pragma once

// All of quill is in its headers, and {fmt} with it. Told to inline whatever a call may come to, the compiler
// takes gigabytes and does not end; what it inlines unasked is what an application gets.
#define BENCH_INLINED_LOOP

#include "Workload.h"

#include <quill/Backend.h>
#include <quill/Frontend.h>
#include <quill/LogMacros.h>
#include <quill/Logger.h>
#include <quill/sinks/FileSink.h>

#include <chrono>
#include <memory>
#include <string>

/// \file
/// What quill has by default stays: a queue for each thread that grows as it must, the cycle counter as the
/// clock, and a backend thread that looks for messages, sleeps 100 us when there are none, and hands what it
/// has written to the system every 200 ms. It has neither an appender that works in the calling thread nor a
/// flush after every line. Where it counts when a line is in the file, it flushes as soon as its queues are
/// empty; nothing of it is made to flush more often than that.
namespace Bench {

/// quill's own.
inline quill::BackendOptions byDefault() {
    return {};
}

/// Lines are in the file as soon as nothing else is left to do.
inline quill::BackendOptions flushedWhenIdle() {
    quill::BackendOptions options;
    options.sink_min_flush_interval = std::chrono::milliseconds(0);
    return options;
}

/// The promptest that it has: the backend thread never sleeps, and leaves its core to others if they want it.
inline quill::BackendOptions withoutSleep() {
    quill::BackendOptions options = flushedWhenIdle();
    options.sleep_duration = std::chrono::nanoseconds(0);
    options.enable_yield_when_idle = true;
    return options;
}

inline quill::PatternFormatterOptions sampleLayout() {
    return quill::PatternFormatterOptions(
        "%(time) %(logger) %(short_source_location) %(log_level) %(message)", "%Y.%m.%d %H:%M:%S:%Qus");
}

/// The backend thread and one file, which any number of loggers write to.
template <typename Sink = quill::FileSink>
class QuillBackend {
public:
    QuillBackend(const Task& task, const quill::BackendOptions& options)
        : sink_(quill::Frontend::create_or_get_sink<Sink>(task.file(), quill::FileSinkConfig())) {
        quill::Backend::start(options);
    }
    QuillBackend(const QuillBackend&) = delete;
    QuillBackend& operator=(const QuillBackend&) = delete;
    ~QuillBackend() { quill::Backend::stop(); }

    quill::Logger* makeLogger(const std::string& name) const {
        return quill::Frontend::create_or_get_logger(name, sink_, sampleLayout());
    }

private:
    std::shared_ptr<quill::Sink> sink_;
};

} // namespace Bench
