#pragma once

#include <cstdlib>
#include <ctime>

namespace ZAV {
namespace TestSupport {

inline void setTimeZone(const char* zone) {
    _putenv_s("TZ", zone);
    _tzset();
}

} // namespace TestSupport
} // namespace ZAV
