#include "log/Appender.h"

#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogMessage.h"
#include "log/commands/CommandBus.h"
#include "log/commands/FailureReport.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/reentrancy/LibraryCall.h"
#include "platform/Threads.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <exception>
#include <memory>

namespace ZAV {
namespace Log {

namespace {

bool isAccepted(const LogMessage& message, const Appender::Filters& filters) {
    return std::all_of(
        filters.begin(), filters.end(),
        [&message](const boost::shared_ptr<MessageFilter>& filter) { return filter->accept(message); });
}

} // namespace

Appender::Appender(const std::string& name, bool synchronous, const Filters& filters)
    : name_(name), synchronous_(synchronous), filters_(filters) {}

Appender::Appender(const AppenderOptions& options)
    : Appender(options.name, options.synchronous, options.filters) {}

Appender::~Appender() {
    FailureNotice::forget(this);
    if (!threadRecord().keepsListeners) {
        CommandBus::instance().unregisterListeners(name_);
    }
}

void Appender::output(const LogMessage& message) {
    if (!isAccepted(message, filters_)) {
        return;
    }
    try {
        doOutput(message);
        FailureNotice::noteWritten(this);
    } catch (const LogException& exception) {
        FailureNotice::noteFailed(this, name_, exception.what());
        FailureReport::deliverFor(message, exception.what());
    } catch (const Platform::ForcedUnwind&) {
        throw; // the thread is being cancelled
    } catch (const std::exception& exception) {
        FailureNotice::noteFailed(this, name_, exception.what());
        FailureReport::deliverFor(message, nullptr);
    } catch (...) {
        FailureNotice::noteFailed(this, name_, "unknown exception");
        FailureReport::deliverFor(message, nullptr);
    }
}

struct AppenderOptions::Inside {
    Inside(const std::string& appenderName, const Util::Properties& properties)
        : values(appenderName, READ_BY_REGISTERED_CLASS, properties),
          layout(values.layoutOr(LayoutName::PLAIN)) {
        const std::string beginning = appenderKey(appenderName, std::string());
        for (auto entry = properties.lower_bound(beginning);
             entry != properties.end() && entry->first.compare(0, beginning.size(), beginning) == 0;
             ++entry) {
            settings[entry->first.substr(beginning.size())] = entry->second;
        }
    }

    const AppenderValues values;
    const std::shared_ptr<const LineLayout> layout;
    Util::Properties settings; ///< the appender's own keys, without their prefix
};

AppenderOptions::AppenderOptions(const std::string& appenderName, const Util::Properties& properties)
    : name(appenderName), inside_(boost::make_shared<Inside>(appenderName, properties)) {
    synchronous = !inside_->values.asynchronous;
    filters = makeFilters(inside_->values);
}

AppenderOptions::~AppenderOptions() = default;
AppenderOptions::AppenderOptions(const AppenderOptions& other) = default;
AppenderOptions& AppenderOptions::operator=(const AppenderOptions& other) = default;

std::string AppenderOptions::formatLine(const LogMessage& message) const {
    std::string line;
    appendWholeLine(line, message, *inside_->layout);
    line.pop_back();
    return line;
}

std::string AppenderOptions::value(const std::string& key, const std::string& byDefault) const {
    std::string found = byDefault;
    inside_->settings.getProperty(key, found);
    return found;
}

} // namespace Log
} // namespace ZAV
