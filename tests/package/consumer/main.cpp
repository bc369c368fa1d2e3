// Sets the library up from a property file, logs from two threads, issues a command, and looks for every line
// where the property file sends it. It runs in an empty folder.

#include "log/ControlServer.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int LINES_PER_THREAD = 100;

void logLines(const std::string& loggerName) {
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger(loggerName);
    for (int i = 0; i < LINES_PER_THREAD; ++i) {
        ZAV_LOG_WARNING(logger, "line " << i);
        logger.info("for information", __LINE__, __FILE__);
    }
}

/// The endings of the lines that hold a text.
std::vector<std::string> endingsOfLinesWith(const std::string& file, const std::string& text) {
    std::ifstream stream(file);
    std::vector<std::string> endings;
    for (std::string line; std::getline(stream, line);) {
        const std::string::size_type begin = line.find(text);
        if (begin != std::string::npos) {
            endings.push_back(line.substr(begin + text.size()));
        }
    }
    return endings;
}

bool holdsAllLines(const std::string& file, const std::string& loggerName) {
    const std::vector<std::string> endings = endingsOfLinesWith(file, " " + loggerName + " ");
    int next = 0;
    for (const std::string& ending : endings) {
        const std::string expected = " WARNING line " + std::to_string(next);
        if (ending.size() >= expected.size() &&
            ending.compare(ending.size() - expected.size(), expected.size(), expected) == 0) {
            ++next;
        }
    }
    return next == LINES_PER_THREAD;
}

void expect(bool condition, const std::string& failure) {
    if (!condition) {
        std::cerr << failure << std::endl;
        std::exit(1);
    }
}

void run(const std::string& propertyFile) {
    ZAV::Log::LogManager::init(propertyFile);
    const ZAV::Log::ControlServer controlServer("zav-log-consumer");
    std::thread net([] { logLines("net.tcp"); });
    std::thread db([] { logLines("db"); });
    net.join();
    db.join();
    ZAV::Log::LogManager::command("DynamicLogLevelFilterSoft", "INFO");
    ZAV_LOG_INFO(ZAV::Log::LoggerFactory::getLogger("db"), "after the command");
    ZAV::Log::LogManager::finish();

    expect(holdsAllLines("all.log0", "net.tcp"), "all.log0 lacks lines of net.tcp");
    expect(holdsAllLines("all.log0", "db"), "all.log0 lacks lines of db");
    expect(endingsOfLinesWith("all.log0", " net.tcp ").size() == LINES_PER_THREAD, "net.tcp passes INFO");
    expect(endingsOfLinesWith("all.log0", " INFO for information").size() == LINES_PER_THREAD,
           "db lacks INFO");
    expect(holdsAllLines("queued.log0", "net.tcp"), "queued.log0 lacks lines of net.tcp");
    expect(endingsOfLinesWith("queued.log0", " db ").empty(), "queued.log0 holds lines of db");
    expect(endingsOfLinesWith("verbose.log", "").size() == 1, "verbose.log holds other lines");
    expect(endingsOfLinesWith("verbose.log", " INFO after the command").size() == 1,
           "the command did nothing");
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(argc > 1 ? argv[1] : "consumer.properties");
        std::cout << "every line is where it belongs" << std::endl;
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << std::endl;
        return 1;
    }
}
