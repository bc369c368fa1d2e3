#pragma once

#include <cstdlib>
#include <ctime>

namespace ZAV::TestSupport {

inline void setTimeZone(const char* zone) {
    _putenv_s("TZ", zone);
    _tzset();
}

} // namespace ZAV::TestSupport
