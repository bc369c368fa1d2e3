#pragma once

/// \file
/// A filter of the application, for the constructor of an appender of its own:
///
///     #include "log/LogMessage.h"
///
///     class NoHealthChecks : public ZAV::Log::MessageFilter {
///     public:
///         bool accept(const ZAV::Log::LogMessage& message) override {
///             return message.getText().find("GET /health") == std::string::npos;
///         }
///     };

#include "zav-util/Export.h"

namespace ZAV {
namespace Log {

class LogMessage;

/// Decides whether an appender writes a message.
class ZAV_LOG_API MessageFilter {
public:
    virtual ~MessageFilter();

    /// May be called by several threads at once. It should not throw: the exception would reach the caller of
    /// the logging call, or be ignored in the consumer thread, which serves asynchronous appenders.
    /// \return true to let the message through
    virtual bool accept(const LogMessage& message) = 0;
};

} // namespace Log
} // namespace ZAV
