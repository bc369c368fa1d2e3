#pragma once

#include "log/async/QueueMonitor.h"
#include "zav-util/TimeUtils.h"

#include <IceUtil/Time.h>

namespace ZAV {
namespace Log {

/// The end of a wait, by a clock that nobody sets.
class Deadline {
public:
    /// \param timeout from now; 0 for no end
    explicit Deadline(Util::TimeUtils::Time timeout);

    bool isOver() const;

    /// Waits until the monitor is notified, or spuriously, but not beyond the deadline.
    void wait(QueueMonitor& monitor) const ZAV_LOG_REQUIRES(monitor);

private:
    const bool hasEnd_;
    const IceUtil::Time end_;
};

} // namespace Log
} // namespace ZAV
