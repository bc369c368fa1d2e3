#pragma once

#include "zav-util/TimeUtils.h"

#include <string_view>

namespace ZAV {
namespace Log {

/// What the layouts show of the process.
struct ProcessDescription {
    std::string_view program; ///< its file name
    int id;
    std::string_view host;
};

/// Makes the calling thread's lines show another process during the object's lifetime, such as the one that
/// left messages in a queue file.
class ProcessOverride {
public:
    /// \param process its texts must outlive the object
    explicit ProcessOverride(const ProcessDescription& process) noexcept;
    ~ProcessOverride();
    ProcessOverride(const ProcessOverride&) = delete;
    ProcessOverride& operator=(const ProcessOverride&) = delete;

private:
    const ProcessDescription process_;
};

/// \param time of the message that is rendered; the host name is read again when its second changes
/// \return views that stay valid until the calling thread calls this again
ProcessDescription describeProcess(Util::TimeUtils::Time time);

} // namespace Log
} // namespace ZAV
