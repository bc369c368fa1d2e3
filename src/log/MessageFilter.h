#pragma once

#include "zav-util/Export.h"

namespace ZAV {
namespace Log {

class LogMessage;

/// Decides for one appender whether it writes a message.
class ZAV_LOG_API MessageFilter {
public:
    virtual ~MessageFilter();

    /// Called by any number of threads at once. It should not throw: what it throws reaches
    /// the logging call, or is dropped in the thread that writes asynchronous appenders.
    /// \return true to let the message through
    virtual bool accept(const LogMessage& message) = 0;
};

} // namespace Log
} // namespace ZAV
