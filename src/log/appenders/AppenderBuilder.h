#pragma once

#include "log/Appender.h"

#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

/// Collects the settings of one appender from its keys "appender.<name>.*" and makes the appender. A derived
/// builder adds the keys of its kind of appender.
class AppenderBuilder {
public:
    explicit AppenderBuilder(const std::string& name);
    virtual ~AppenderBuilder();
    AppenderBuilder(const AppenderBuilder&) = delete;
    AppenderBuilder& operator=(const AppenderBuilder&) = delete;

    /// \return a new appender, which the caller owns
    virtual Appender* build() = 0;

    /// Reads the keys that every appender has. A derived builder calls this first.
    /// \throw LogException for a bad level, message type or expiration
    virtual AppenderBuilder& configure(const Util::Properties& properties);

protected:
    std::string name_;
    bool synchronous_ = true;
    Appender::Filters filters_;

private:
    void addLevelFilter(const Util::Properties& properties);
    void addDynamicLevelFilter(const Util::Properties& properties);
};

} // namespace Log
} // namespace ZAV
