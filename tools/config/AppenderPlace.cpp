#include "config/AppenderPlace.h"

#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"

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

AppenderPlace::AppenderPlace(const std::string& appenderName, const Util::Properties& properties)
    : kind(kindOf(classOf(appenderName, properties))), folder("."), file(appenderName) {
    const Log::AppenderSettings settings(appenderName, properties);
    if (kind == STREAM) {
        std::string name;
        settings.get(Setting::OSTREAM, name);
        stream = name == "cerr" || name == "clog" ? "standard error" : "standard output";
    } else {
        settings.get(Setting::DIR, folder);
        settings.get(Setting::FILE_NAME, file);
    }
}

std::string AppenderPlace::describe() const {
    if (kind == STREAM) {
        return stream;
    }
    return folder + '/' + file + (kind == SERIES ? "0" : "");
}

} // namespace Tools
} // namespace ZAV
