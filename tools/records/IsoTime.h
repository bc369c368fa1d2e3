#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ZAV {
namespace Tools {

/// The last microsecond of the year 9999, since 1970-01-01 00:00:00.
constexpr std::int64_t LATEST_TIME = INT64_C(253402300799999999);

/// Reads a point in time as lines of `json` and the option `--json` show it.
/// \param text "2026-05-07T12:03:27.123Z", with any fraction or none, or with an offset as in "+02:00"
/// \return microseconds since 1970-01-01 00:00:00 UTC; nothing for another text, or for a time before that or after
///         `LATEST_TIME`
std::optional<std::int64_t> readIsoTime(std::string_view text);

} // namespace Tools
} // namespace ZAV
