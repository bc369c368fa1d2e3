#pragma once

#include "zav-util/TimeUtils.h"

#include <string>

namespace ZAV {
namespace Log {

/// \param time of the message that is rendered: the host's name is as old as one second of it at most
/// \return the program's file name, the process id and the host's name, with a space between them
std::string describeProcess(Util::TimeUtils::Time time);

} // namespace Log
} // namespace ZAV
