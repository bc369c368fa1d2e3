#include "config/Appenders.h"

#include "log/appenders/FileAppender.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

#include <algorithm>
#include <iostream>

namespace ZAV {
namespace Tools {

namespace {

namespace Class = Log::AppenderClass;
namespace Setting = Log::AppenderSetting;

AppenderPlace::Kind kindOf(const std::string& className) {
    if (className == Class::FILE_SERIES) {
        return AppenderPlace::SERIES;
    }
    if (className == Class::ROLLED_FILE) {
        return AppenderPlace::ROLLED_FILE;
    }
    return className == Class::SINGLE_FILE ? AppenderPlace::SINGLE_FILE : AppenderPlace::NO_FILE;
}

std::string classOf(const std::string& appenderName, const Util::Properties& properties) {
    std::string className;
    properties.getProperty(Log::appenderKey(appenderName), className);
    return className;
}

} // namespace

/// Reads only settings that no value can make fail, so that a wrong one elsewhere hides no file.
AppenderPlace::AppenderPlace(const std::string& appenderName, const Util::Properties& properties) {
    const std::string className = classOf(appenderName, properties);
    Log::AppenderValues values(appenderName, Log::readerOfClass(className));
    for (const char* const name :
         {Setting::OSTREAM, Setting::DIR, Setting::FILE_NAME, Setting::FILE_NUMBER}) {
        values.read(*Log::findKey(Log::KeySection::APPENDER, name), properties);
    }
    kind = kindOf(className);
    folder = values.dir;
    file = values.file;
    highestDigit =
        static_cast<char>('0' + std::min(values.fileNumber, Log::FileAppender::HIGHEST_FILE_NUMBER));
    if (className == Class::STDOUT) {
        other = values.stream == &std::cout ? "standard output" : "standard error";
    } else {
        other = className;
    }
}

std::string AppenderPlace::describe() const {
    return kind == NO_FILE ? other : folder + '/' + file + (kind == SERIES ? "0" : "");
}

AppenderFilters::AppenderFilters(const std::string& appenderName, const Util::Properties& properties)
    : filters_(
          Log::makeFilters(Log::AppenderValues(appenderName, Log::READ_BY_REGISTERED_CLASS, properties))) {}

Log::MessageFilter* AppenderFilters::rejecting(const Log::LogMessage& message) const {
    const auto filter = std::find_if(filters_.begin(), filters_.end(),
                                     [&message](const auto& f) { return !f->accept(message); });
    return filter == filters_.end() ? nullptr : filter->get();
}

} // namespace Tools
} // namespace ZAV
