#pragma once

#include "log/Appender.h"
#include "log/CommandListener.h"

#include <functional>
#include <string>
#include <utility>

namespace ZAV::TestSupport {

/// Calls the test's function for every message.
class CallingAppender : public Log::Appender {
public:
    using Call = std::function<void(const Log::LogMessage&)>;
    explicit CallingAppender(Call call, bool synchronous = true)
        : Appender("calling", synchronous), call_(std::move(call)) {}

protected:
    void doOutput(const Log::LogMessage& message) override { call_(message); }

private:
    Call call_;
};

/// Calls the test's function for every command.
class CallingListener : public Log::CommandListener {
public:
    using Call = std::function<void(const std::string&)>;
    explicit CallingListener(Call call) : call_(std::move(call)) {}
    void onCommand(const std::string& argument) override { call_(argument); }

private:
    Call call_;
};

} // namespace ZAV::TestSupport
