// Logs asynchronously from an object that is made before `main` and goes after it, from a thread that ends,
// and from a forked child, and ends without `finish`. What the library makes when it is loaded must be there
// for all of them, although it is now made with the objects of this program.

#include "log/ControlServer.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

#include <cstdlib>
#include <iostream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

ZAV::Log::Logger& logger() {
    return ZAV::Log::LoggerFactory::getLogger("app");
}

struct Service {
    Service() { ZAV::Log::LoggerFactory::getRootLogger(); }
    ~Service() { ZAV_LOG_INFO(logger(), "an object goes"); }
};

const Service service;

bool childEndsWell() {
    const pid_t child = fork();
    if (child == 0) {
        ZAV_LOG_INFO(logger(), "a child logs");
        std::exit(0);
    }
    int status = 1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

} // namespace

int main(int, char** arguments) {
    ZAV::Log::LogManager::init(arguments[1]);
    const ZAV::Log::ControlServer controlServer("zav-log-static-consumer");
    std::thread([] { ZAV_LOG_INFO(logger(), "a thread logs"); }).join();
    ZAV_LOG_INFO(logger(), "main logs");
    if (!childEndsWell()) {
        std::cerr << "the child failed\n";
        return 1;
    }
    return 0;
}
