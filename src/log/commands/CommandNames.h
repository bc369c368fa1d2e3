#pragma once

namespace ZAV {
namespace Log {

/// The commands that the library itself issues.
namespace CommandName {
constexpr char LOWER_DYNAMIC_LEVELS[] = "DynamicLogLevelFilterSoft"; ///< with the name of a level
constexpr char FAILURE_REPORT[] = "EXCEPTION";                       ///< with a report
} // namespace CommandName

} // namespace Log
} // namespace ZAV
