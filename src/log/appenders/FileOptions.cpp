#include "log/appenders/FileOptions.h"

#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"

#include <string>

namespace ZAV {
namespace Log {

void FileOptions::read(const AppenderSettings& settings) {
    escape = settings.getBoolean(AppenderSetting::ESCAPE, escape);
    rules.followLinks = settings.getBoolean(AppenderSetting::FOLLOW_LINKS, rules.followLinks);
    std::string mode;
    if (settings.get(AppenderSetting::FILE_MODE, mode)) {
        rules.permissions = readFileMode(mode);
    }
    recovery = settings.getPeriod(AppenderSetting::RECOVERY);
    std::string flush;
    if (settings.get(AppenderSetting::FLUSH, flush)) {
        writesBatches = flush == "batch";
    }
}

} // namespace Log
} // namespace ZAV
