#pragma once

#include "config/ConfiguredAppender.h"
#include "log/LogMessage.h"
#include "zav-util/Properties.h"

#include <string>

namespace ZAV {
namespace Tools {

/// A configured appender, with the filters that the library gives it.
class ExplainedAppender {
public:
    /// \param properties must outlive this object
    ExplainedAppender(const std::string& name, const Util::Properties& properties);

    const std::string& name() const { return name_; }
    std::string place() const { return place_.describe(); }

    /// \return the layout that the configuration names; empty if it leaves the choice to the appender's class
    std::string layout() const;

    /// \return why a message is not written; empty if it is
    std::string refusal(const Log::LogMessage& message) const;

private:
    std::string setting(const std::string& setting) const;

    std::string name_;
    const Util::Properties& properties_;
    AppenderFilters filters_;
    AppenderPlace place_;
};

} // namespace Tools
} // namespace ZAV
