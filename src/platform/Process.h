#pragma once

#include <string>

namespace ZAV {
namespace Platform {

/// \return the full path of the running program's executable file, as the system gives it
std::string executablePath();

/// \return the id of this process
int processId();

/// \return the same, without asking the system, which costs more than rendering a whole line. A forked child
///         that was made past the C library has its parent's.
int rememberedProcessId();

/// \return whether a process of that id exists; one that has ended counts until its parent has asked for its
///         result, and another that got the id meanwhile counts as well
bool isProcessAlive(int id);

} // namespace Platform
} // namespace ZAV
