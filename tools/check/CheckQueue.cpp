#include "check/Checks.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"

namespace ZAV {
namespace Tools {

namespace {

bool leavesNoRoom(const std::string& maxQueueSize) {
    const Log::LeadingNumber<std::int32_t> size = Log::readLeadingSigned(maxQueueSize);
    return size.isWhole && (size.value == 0 || size.value == 1);
}

/// \return the first line that makes an appender asynchronous; nullptr if there is none
const PropertyLine* firstAsynchronous(const Configuration& configuration) {
    const PropertyLine* first = nullptr;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const line = configuration.setting(appender, Log::AppenderSetting::ASYNCHRONOUS);
        const bool isAsynchronous = line != nullptr && Log::readBoolean(line->value).value_or(false);
        if (isAsynchronous && (first == nullptr || line->number < first->number)) {
            first = line;
        }
    }
    return first;
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
}

} // namespace Tools
} // namespace ZAV
