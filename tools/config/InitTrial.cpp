#include "config/InitTrial.h"

#include "config/ReportCapture.h"
#include "log/LogManager.h"

#include <exception>

namespace ZAV {
namespace Tools {

std::string complaintOfInit(const Util::Properties& properties) {
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
