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
    std::string text;
    appendSeconds(text, *this);
    return text;
}

std::string Time::toString() const {
    std::string text;
    appendTime(text, *this);
    return text;
}

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
