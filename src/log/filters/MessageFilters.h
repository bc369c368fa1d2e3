#pragma once

#include "log/MessageFilter.h"
#include "log/MessageType.h"
#include "log/filters/LevelFilter.h"

#include <boost/shared_ptr.hpp>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

struct AppenderValues;

/// Passes messages of the loggers whose names begin with one of a list of prefixes. The prefixes are plain
/// text: "net" passes "net.tcp" and also "network". Without a prefix every message is rejected.
class FilterLogger : public MessageFilter {
public:
    explicit FilterLogger(std::vector<std::string> loggerNames) : loggerNames_(std::move(loggerNames)) {}

    bool accept(const LogMessage& message) override;

private:
    const std::vector<std::string> loggerNames_;
};

/// Passes messages at or above a level.
class FilterLogLevel : public LevelFilter {
public:
    explicit FilterLogLevel(Level::LogLevel level) : level_(level) {}

private:
    bool passes(const LogMessage& message) override;
    State ownStateAt(Time) const override { return {level_, Time()}; }

    const Level::LogLevel level_;
};

/// Passes messages of one type.
class FilterMessageType : public MessageFilter {
public:
    explicit FilterMessageType(MessageType messageType) : messageType_(messageType) {}

    bool accept(const LogMessage& message) override;

private:
    const MessageType messageType_;
};

/// \return the filters that an appender is to have, in the order in which they are asked. One whose level a
///         command may lower listens to that command until it is destroyed.
std::list<boost::shared_ptr<MessageFilter>> makeFilters(const AppenderValues& values);

} // namespace Log
} // namespace ZAV
