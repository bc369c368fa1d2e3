#pragma once

#include "Workload.h"

#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <unistd.h>

#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

/// \file
/// Thread-safe sinks throughout, as in an application with several threads. Milliseconds and three zeros are
/// cheaper for it than microseconds. Its asynchronous queue is always bounded and preallocated; here it has
/// room for all messages and would block rather than lose one.

namespace Bench {

using LoggerPointer = std::shared_ptr<spdlog::logger>;

constexpr spdlog::source_loc LOCATION{SampleLine::SOURCE_FILE, SampleLine::SOURCE_LINE, "connect"};

/// The level in upper case, for which there is no built-in flag.
class UpperCaseLevel : public spdlog::custom_flag_formatter {
public:
    void format(const spdlog::details::log_msg& message, const std::tm&,
                spdlog::memory_buf_t& line) override {
        static const std::string_view names[] = {"TRACE", "DEBUG",    "INFO", "WARNING",
                                                 "ERROR", "CRITICAL", "OFF"};
        const std::string_view name = names[message.level];
        line.append(name.data(), name.data() + name.size());
    }

    std::unique_ptr<custom_flag_formatter> clone() const override {
        return std::make_unique<UpperCaseLevel>();
    }
};

inline std::unique_ptr<spdlog::pattern_formatter> makeFormatter(const std::string& process = std::string()) {
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<UpperCaseLevel>('*');
    formatter->set_pattern("%Y.%m.%d %T:%e000" + process + " %n %@ %* %v");
    return formatter;
}

inline std::string hostName() {
    char name[256] = {};
    ::gethostname(name, sizeof name - 1);
    return name;
}

template <typename Logger = spdlog::logger, typename... Arguments>
LoggerPointer makeLogger(const std::string& name, Arguments&&... arguments) {
    auto logger = std::make_shared<Logger>(name, std::forward<Arguments>(arguments)...);
    logger->set_formatter(makeFormatter());
    logger->set_level(spdlog::level::info);
    logger->flush_on(spdlog::level::info);
    return logger;
}

inline auto makeFileSink(const Task& task) {
    return std::make_shared<spdlog::sinks::basic_file_sink_mt>(task.file());
}

/// The loggers of one queue, which write to one file.
class Queue {
public:
    explicit Queue(const Task& task)
        : pool_(std::make_shared<spdlog::details::thread_pool>(asynchronousMessages(task), 1)),
          sink_(makeFileSink(task)) {}

    LoggerPointer makeLogger(const std::string& name) const {
        return Bench::makeLogger<spdlog::async_logger>(name, sink_, pool_,
                                                       spdlog::async_overflow_policy::block);
    }

private:
    std::shared_ptr<spdlog::details::thread_pool> pool_;
    spdlog::sink_ptr sink_;
};

} // namespace Bench
