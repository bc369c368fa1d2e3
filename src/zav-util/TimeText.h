#pragma once

#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Util {
namespace TimeUtils {

/// Appends what `time.toSecondsString()` gives.
void appendSeconds(std::string& text, Time time);

/// Appends what `time.toString()` gives.
void appendTime(std::string& text, Time time);

} // namespace TimeUtils
} // namespace Util
} // namespace ZAV
