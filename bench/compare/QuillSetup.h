#pragma once

// All of quill, including {fmt}, is in its headers. If forced to inline everything that a call may reach, the
// compiler takes gigabytes and does not terminate; its own choice is what an application gets.
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
/// quill keeps its defaults: a growing queue for each thread, the cycle counter as the clock, and a backend
/// thread that polls for messages, sleeps 100 us when there are none, and flushes to the system every 200 ms.
/// It has neither an appender that works in the calling thread nor a flush after every line. Where the time
/// at which a line is in the file matters, it flushes as soon as its queues are empty, but never more often
/// than that.
namespace Bench {

/// quill's default options.
inline quill::BackendOptions byDefault() {
    return {};
}

/// Flushes whenever the queues are empty.
inline quill::BackendOptions flushedWhenIdle() {
    quill::BackendOptions options;
    options.sink_min_flush_interval = std::chrono::milliseconds(0);
    return options;
}

/// Its lowest latency: the backend thread never sleeps, but yields its core to others.
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

/// The backend thread and one file, shared by any number of loggers.
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
