#pragma once

#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// Makes a time zone the one of this process for `utcOffset`. Where a system has a list of zones of its own
/// (Windows), the name is one of that list.
/// \return false, and nothing is changed, if the system does not know the zone
bool useZone(const std::string& name);

/// \param seconds seconds since 1970-01-01 00:00:00 UTC
/// \return how many seconds the process's zone is ahead of UTC at that time
std::int64_t utcOffset(std::int64_t seconds);

} // namespace Platform
} // namespace ZAV
