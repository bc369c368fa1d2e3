// Logs from four threads, as fast as it can, into a queue kept in a file, and through two appenders.
// Arguments: the number of the run, `line` or `batch`, the way in which it ends, the microseconds until then,
// and the directory. A line is RUN:THREAD:NUMBER and a full stop.

#include "KilledProcess.h"

#include "log/LogException.h"
#include "log/LogFormat.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;
using namespace ZAV::TestSupport;

namespace {

constexpr int THREADS = 4;

void end(const std::string& way) {
    if (way == "exception") {
        throw std::runtime_error("nobody catches it");
    }
    if (way == "fault") {
        std::raise(SIGSEGV);
    }
    if (way == "memory") {
        limitMemory();
        // In blocks so large that the other threads still get memory until this one ends the process.
        for (std::vector<std::unique_ptr<char[]>> used;;) {
            used.push_back(std::make_unique<char[]>(std::size_t{8} << 20U));
        }
    }
    killThisProcess();
}

void log(Logger& logger, const std::string& run, int thread, std::atomic<int>& returned) {
    for (int number = 1;; ++number) {
        if (number % 2 == 0) {
            ZAV_LOG_INFO(logger, run << ':' << thread << ':' << number << '.');
        } else {
            ZAV_LOGF_INFO(logger, "{}:{}:{}.", run, thread, number);
        }
        returned = number;
    }
}

} // namespace

int main(int, char** arguments) {
    const std::string run = arguments[1];
    const std::string way = arguments[3];
    const std::chrono::microseconds life(std::atol(arguments[4]));
    const std::string directory = arguments[5];
    Util::Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.a"] = "SimpleFileAppender";
    properties["appender.b"] = "RollingFileAppender";
    for (const std::string name : {"a", "b"}) {
        properties["appender." + name + ".asynchronous"] = "true";
        properties["appender." + name + ".flush"] = arguments[2];
        properties["appender." + name + ".dir"] = directory;
        properties["appender." + name + ".file"] = name + ".log";
    }
    properties["zav.log.AsynchronousDispatcher.queueFile"] = directory + "/queue";
    properties["zav.log.AsynchronousDispatcher.queueFileSize"] = "1 MB";
    properties["zav.log.AsynchronousDispatcher.overflow"] = "block";
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "2000";
    std::atomic<int>* const returned = numbersIn(directory + "/returned." + run, THREADS);
    if (way != "finish") {
        std::thread([life, way] {
            std::this_thread::sleep_for(life);
            end(way);
        }).detach();
    }
    try {
        LogManager::init(properties);
    } catch (const LogException& exception) {
        std::cerr << exception.what() << '\n';
        return EXIT_FAILURE;
    }
    if (way == "finish") {
        LogManager::finish();
        return EXIT_SUCCESS;
    }
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&run, thread, returned] {
            log(LoggerFactory::getLogger("net." + std::to_string(thread)), run, thread, returned[thread]);
        });
    }
    threads.front().join();
}
