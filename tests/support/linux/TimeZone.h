#pragma once

#include <cstdlib>
#include <ctime>

namespace ZAV::TestSupport {

inline void setTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

} // namespace ZAV::TestSupport
