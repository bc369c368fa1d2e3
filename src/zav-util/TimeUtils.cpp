#include "zav-util/TimeUtils.h"

#include "platform/Clock.h"
#include "zav-util/TimeText.h"

namespace ZAV {
namespace Util {
namespace TimeUtils {

Time Time::now() {
    return Time(Platform::currentMilliseconds(), MSEC);
}

std::string Time::toSecondsString() const {
    char text[SECONDS_LENGTH];
    writeSeconds(text, *this);
    return std::string(text, sizeof text);
}

std::string Time::toString() const {
    char text[TIME_LENGTH];
    writeTime(text, *this);
    return std::string(text, sizeof text);
}

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
