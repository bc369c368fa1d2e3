#include "log/Appender.h"

#include "log/LogException.h"
#include "log/LogLine.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"

#include <algorithm>

namespace ZAV {
namespace Log {

namespace {

/// Delivers the report of a failure on the command bus, unless the calling thread is already delivering one:
/// then the failed message is one that a listener logs in answer, and reporting it would lead back to the
/// same listener for ever.
class FailureReport {
public:
    explicit FailureReport(const std::string& text) {
        if (!delivering_) {
            deliver(text);
        }
    }

private:
    struct DeliveringMark {
        DeliveringMark() { delivering_ = true; }
        ~DeliveringMark() { delivering_ = false; }
    };

    static void deliver(const std::string& text) {
        const DeliveringMark mark;
        LogManager::command("EXCEPTION", text);
    }

    static thread_local bool delivering_;
};

thread_local bool FailureReport::delivering_ = false;

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
        FailureReport(std::string("LogException from doOutput(msg).\nException = ") + exception.what() +
                      "\nMsg = " + formatLogLine(message));
    } catch (...) {
        FailureReport("Unknown exception from doOutput(msg).\nMsg = " + formatLogLine(message));
    }
}

} // namespace Log
} // namespace ZAV
