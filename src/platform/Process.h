#pragma once

#include <cstdint>
#include <string>

namespace ZAV {
namespace Platform {

/// \return the full path of the running program's executable file, as the system gives it
std::string executablePath();

/// \return the id of this process
int processId();

/// \return what the ids of this process are counted in, since an id means nothing elsewhere: a container has
///         ids of its own. Also 0 if the system does not say.
std::uint64_t processIdSpace();

/// \return whether a process of that id runs; another that got the id meanwhile counts as well. Where the
///         system does not tell a process that has ended from one that runs, it counts until its parent has
///         asked for its result.
bool isProcessAlive(int id);

} // namespace Platform
} // namespace ZAV
