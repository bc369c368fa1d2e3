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

/// Has the calling thread's lines show another process while it lives, as for messages that this one has
/// left.
class ShownProcess {
public:
    /// \param process with texts that outlive the object
    explicit ShownProcess(const ProcessDescription& process) noexcept;
    ~ShownProcess();
    ShownProcess(const ShownProcess&) = delete;
    ShownProcess& operator=(const ShownProcess&) = delete;

private:
    const ProcessDescription process_;
};

/// \param time of the message that is rendered: the host's name is as old as one second of it at most
/// \return texts that stay until the calling thread asks again
ProcessDescription describeProcess(Util::TimeUtils::Time time);

} // namespace Log
} // namespace ZAV
