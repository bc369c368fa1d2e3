#include "check/Checks.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"

namespace ZAV {
namespace Tools {

namespace {

bool leavesNoRoom(const std::string& maxQueueSize) {
    const Log::LeadingNumber<std::int32_t> size = Log::readLeadingSigned(maxQueueSize);
    return size.isWhole && (size.value == 0 || size.value == 1);
}

/// \return the line that makes an appender asynchronous; nullptr if it is synchronous
const PropertyLine* asynchronousLine(const Configuration& configuration, const DeclaredAppender& appender) {
    const PropertyLine* const line = configuration.setting(appender, Log::AppenderSetting::ASYNCHRONOUS);
    return line != nullptr && Log::readBoolean(line->value).value_or(false) ? line : nullptr;
}

/// \return the first line that makes an appender asynchronous; nullptr if there is none
const PropertyLine* firstAsynchronous(const Configuration& configuration) {
    const PropertyLine* first = nullptr;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const line = asynchronousLine(configuration, appender);
        if (line != nullptr && (first == nullptr || line->number < first->number)) {
            first = line;
        }
    }
    return first;
}

/// Only the consumer thread works in batches. The other value is what a synchronous appender does anyway.
void checkFlush(const Configuration& configuration, const DeclaredAppender& appender, Findings& findings) {
    const PropertyLine* const flush = configuration.setting(appender, Log::AppenderSetting::FLUSH);
    const bool isRead = flush != nullptr && (appender.reader & Log::READ_BY_FILE_APPENDERS) != 0;
    if (isRead && flush->value == "batch" && asynchronousLine(configuration, appender) == nullptr) {
        findings.addWarning(*flush, "ignored-key",
                            "has no effect without '" +
                                Log::appenderKey(appender.name, Log::AppenderSetting::ASYNCHRONOUS) +
                                " = true'");
    }
}

} // namespace

void checkQueue(const Configuration& configuration, Findings& findings) {
    const PropertyLine* const size =
        configuration.file().find(Log::dispatcherKey(Log::DispatcherOption::MAX_QUEUE_SIZE));
    const PropertyLine* const asynchronous = firstAsynchronous(configuration);
    if (size != nullptr && asynchronous != nullptr && leavesNoRoom(size->value)) {
        findings.addWarning(later(*size, *asynchronous), "no-queue",
                            "a queue of " + size->value + " has no room for the messages of '" +
                                asynchronous->key + "'");
    }
    for (const DeclaredAppender& appender : configuration.appenders()) {
        checkFlush(configuration, appender, findings);
    }
}

} // namespace Tools
} // namespace ZAV
