#include "log/Appender.h"

#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogMessage.h"
#include "log/commands/CommandBus.h"
#include "log/commands/FailureNotice.h"
#include "log/commands/FailureReport.h"
#include "log/reentrancy/ThreadRecord.h"
#include "platform/Threads.h"

#include <algorithm>
#include <exception>

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

} // namespace Log
} // namespace ZAV
