#pragma once

#include "log/Level.h"

#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// What becomes of the messages of one logger at one appender.
struct Route {
    std::string appender;
    std::string place;                          ///< where the appender writes
    std::string layout;                         ///< the layout of its lines, if the configuration names one
    std::optional<Log::Level::LogLevel> lowest; ///< the lowest level that is written; nothing if none is
    std::string reason;                         ///< why not more is written, or nothing at all
};

/// What becomes of one message at one appender.
struct Delivery {
    std::string appender;
    std::string place;
    std::string refusal; ///< why it is not written; empty if it is
};

} // namespace Tools
} // namespace ZAV
