#pragma once

#include "zav-util/TimeUtils.h"

#include <string_view>

namespace ZAV {
namespace Log {

/// What the longer layout says of the process.
struct ProcessDescription {
    std::string_view program; ///< its file name
    int id;
    std::string_view host;
};

/// \param time of the message that is rendered: the host's name is as old as one second of it at most
/// \return texts that stay until the calling thread asks again
ProcessDescription describeProcess(Util::TimeUtils::Time time);

} // namespace Log
} // namespace ZAV
