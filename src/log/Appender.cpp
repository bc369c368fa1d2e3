#include "log/Appender.h"

#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"
#include "log/commands/FailureReport.h"

#include <algorithm>

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

Appender::~Appender() {
    LogManager::unregisterCommandListener(name_);
}

void Appender::output(const LogMessage& message) {
    if (!isAccepted(message, filters_)) {
        return;
    }
    try {
        doOutput(message);
    } catch (const LogException& exception) {
        FailureReport::deliver(std::string("LogException from doOutput(msg).\nException = ") +
                               exception.what() + "\nMsg = " + formatLogLine(message));
    } catch (...) {
        FailureReport::deliver("Unknown exception from doOutput(msg).\nMsg = " + formatLogLine(message));
    }
}

} // namespace Log
} // namespace ZAV
