#pragma once

#include <cstdlib>
#include <ctime>

namespace ZAV {
namespace TestSupport {

inline void setTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

} // namespace TestSupport
} // namespace ZAV
