#include "config/AppenderPlace.h"

#include "log/appenders/FileAppender.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/KeyNames.h"

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
    return className == Class::SINGLE_FILE ? AppenderPlace::SINGLE_FILE : AppenderPlace::STREAM;
}

std::string classOf(const std::string& appenderName, const Util::Properties& properties) {
    std::string className;
    properties.getProperty(Log::appenderKey(appenderName), className);
    return className;
}

} // namespace

/// Only what no value can make fail is read, so that a wrong one elsewhere hides no file.
AppenderPlace::AppenderPlace(const std::string& appenderName, const Util::Properties& properties)
    : kind(kindOf(classOf(appenderName, properties))) {
    Log::AppenderValues values(appenderName);
    for (const char* const name :
         {Setting::OSTREAM, Setting::DIR, Setting::FILE_NAME, Setting::FILE_NUMBER}) {
        values.read(*Log::findKey(Log::KeySection::APPENDER, name), properties);
    }
    stream = values.stream == &std::cout ? "standard output" : "standard error";
    folder = values.dir;
    file = values.file;
    highestDigit =
        static_cast<char>('0' + std::min(values.fileNumber, Log::FileAppender::HIGHEST_FILE_NUMBER));
}

std::string AppenderPlace::describe() const {
    if (kind == STREAM) {
        return stream;
    }
    return folder + '/' + file + (kind == SERIES ? "0" : "");
}

} // namespace Tools
} // namespace ZAV
