#include "TestClock.h"

#include "log/LogManager.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>

using namespace ZAV;
using namespace ZAV::Util::TimeUtils;

namespace {

constexpr std::uint64_t HOURS = 365 * 24;
constexpr std::uint64_t HOURS_BETWEEN_STARTS = 500;

/// The system's own clock, of which files get their times, stands still in comparison.
void dateFile(const std::string& path) {
    const auto seconds = static_cast<std::time_t>(Time::now().microseconds() / 1'000'000);
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

/// \return whether the folder has nothing but the live file, "year.log", and packed ones
bool isAllPacked(const std::string& folder) {
    const std::filesystem::directory_iterator entries(folder);
    return std::all_of(begin(entries), end(entries), [](const auto& entry) {
        return entry.path().extension() == ".log" || entry.path().extension() == ".gz";
    });
}

} // namespace

/// Logs two numbered lines an hour for the year 2027 in a zone that is an hour ahead of UTC when it begins,
/// and starts anew now and then. Arguments: the folder, "hour" or "midnight", and further settings with their
/// values.
int main(int count, char** arguments) {
    const std::string folder = arguments[1];
    Util::Properties properties{{"logger.root.level", "INFO"},
                                {"appender.year", "RollingFileAppender"},
                                {"appender.year.dir", folder},
                                {"appender.year.rollAt", arguments[2]},
                                {"appender.year.compress", "gzip"}};
    for (int index = 3; index + 1 < count; index += 2) {
        properties[std::string("appender.year.") + arguments[index]] = arguments[index + 1];
    }
    Log::Logger& logger = Log::LoggerFactory::getLogger("net");
    const Time begin(1'798'758'000, SEC); // 2026-12-31 23:00:00 UTC
    for (std::uint64_t hour = 0; hour < HOURS; ++hour) {
        if (hour % HOURS_BETWEEN_STARTS == 0) {
            Log::LogManager::finish();
            dateFile(folder + "/year.log");
            Log::LogManager::init(properties);
        }
        for (const unsigned half : {0U, 1U}) {
            TestSupport::setClock(begin + Time(hour, HOUR) + Time(half * 30, MIN));
            logger.info("number " + std::to_string(2 * hour + half + 1), 0, "");
        }
    }
    while (!isAllPacked(folder)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    Log::LogManager::finish();
    return 0;
}
