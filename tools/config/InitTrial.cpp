#include "config/InitTrial.h"

#include "log/LogManager.h"
#include "log/config/ConfigurationKeys.h"
#include "platform/Process.h"

#include <exception>
#include <iostream>

namespace ZAV {
namespace Tools {

Util::Properties withoutFolders(const Util::Properties& properties) {
    const std::string nowhere = Platform::executablePath() + "/none"; // no path exists below a file
    Util::Properties harmless = properties;
    for (const std::string& key : properties.getKeys()) {
        if (const auto name = Log::declaredAppender(key)) {
            harmless[Log::appenderKey(*name, Log::AppenderSetting::DIR)] = nowhere;
        }
    }
    harmless.erase(Log::dispatcherKey(Log::DispatcherOption::QUEUE_FILE));
    return harmless;
}

std::string initError(const Util::Properties& properties) {
    const ReportCapture reports;
    try {
        Log::LogManager::init(withoutFolders(properties));
        Log::LogManager::finish();
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return reports.firstLine();
}

ReportCapture::ReportCapture() : shown_(std::cerr.rdbuf(reports_.rdbuf())) {}

ReportCapture::~ReportCapture() {
    std::cerr.rdbuf(shown_);
}

std::string ReportCapture::firstLine() const {
    const std::string text = reports_.str();
    return text.substr(0, text.find('\n'));
}

} // namespace Tools
} // namespace ZAV
