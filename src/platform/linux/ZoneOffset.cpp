#include "platform/ZoneOffset.h"

#include "platform/Files.h"

#include <cstdlib>
#include <ctime>

namespace ZAV {
namespace Platform {

namespace {

std::string zoneFolder() {
    const char* folder = std::getenv("TZDIR");
    return folder != nullptr ? folder : "/usr/share/zoneinfo";
}

/// The C library takes any text for a zone and silently shows UTC; so the file is asked for first.
bool isKnown(const std::string& name) {
    const bool leavesFolder = name.front() == '/' || name.find("..") != std::string::npos;
    std::string zone;
    return !leavesFolder && readFile(zoneFolder() + '/' + name, zone) && zone.compare(0, 4, "TZif") == 0;
}

} // namespace

bool useZone(const std::string& name) {
    const bool isUtc = name == "UTC"; // also where no list of zones is installed
    if (name.empty() || (!isUtc && !isKnown(name))) {
        return false;
    }
    setenv("TZ", isUtc ? "UTC0" : (':' + name).c_str(), 1);
    tzset();
    return true;
}

std::int64_t utcOffset(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm local;
    return localtime_r(&time, &local) == nullptr ? 0 : local.tm_gmtoff;
}

} // namespace Platform
} // namespace ZAV
