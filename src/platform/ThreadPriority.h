#pragma once

namespace ZAV {
namespace Platform {

constexpr int THREAD_PRIORITY_LOWEST_VALUE = -2;
constexpr int THREAD_PRIORITY_NORMAL_VALUE = 0;
constexpr int THREAD_PRIORITY_HIGHEST_VALUE = 2;

/// Asks for a priority for the calling thread.
///
/// Where the system ties higher priorities to a right that the user lacks, the priority is raised as far as
/// the system allows and the call succeeds.
/// \param priority one of the three values above
/// \return 0, or the system's error number if the request failed
int setCurrentThreadPriority(int priority);

} // namespace Platform
} // namespace ZAV
