#pragma once

#include "zav-util/Export.h"

namespace ZAV {
namespace Log {

class LogMessage;

/// Decides for one appender whether it writes a message.
class ZAV_LOG_API MessageFilter {
public:
    virtual ~MessageFilter();

    /// Called by any number of threads at once. It should not throw: the exception would reach the caller of
    /// the logging call or, in the thread that writes asynchronous appenders, be dropped.
    /// \return true to let the message through
    virtual bool accept(const LogMessage& message) = 0;
};

} // namespace Log
} // namespace ZAV
