#include "config/InitTrial.h"

#include "config/ReportCapture.h"
#include "log/LogManager.h"
#include "log/config/KeyNames.h"

#include <exception>

namespace ZAV {
namespace Tools {

std::string complaintOfInit(Util::Properties properties) {
    properties.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE)); // which a trial must not touch
    const ReportCapture reports;
    try {
        Log::LogManager::init(properties);
        Log::LogManager::finish();
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return reports.firstLine();
}

} // namespace Tools
} // namespace ZAV
