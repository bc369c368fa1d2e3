#include "check/Checks.h"
#include "config/AppenderPlace.h"
#include "log/config/ConfigurationKeys.h"
#include "platform/Files.h"

#include <filesystem>
#include <system_error>

namespace ZAV {
namespace Tools {

namespace {

namespace Setting = Log::AppenderSetting;

/// \return false, after adding a warning, if no files can be made in a folder
bool checkFolder(const std::string& folder, const PropertyLine& line, Findings& findings) {
    std::error_code problem;
    if (!std::filesystem::is_directory(folder, problem)) {
        findings.addWarning(line, "missing-directory", "there is no directory '" + folder + "'");
        return false;
    }
    if (!Platform::isWritableDirectory(folder)) {
        findings.addWarning(line, "unwritable-directory",
                            "no file can be made in the directory '" + folder + "'");
        return false;
    }
    return true;
}

} // namespace

void checkFolders(const Configuration& configuration, Findings& findings) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const AppenderPlace place(appender.name, configuration.file().properties());
        if (place.kind == AppenderPlace::NO_FILE) {
            continue;
        }
        const PropertyLine* const dir = configuration.setting(appender, Setting::DIR);
        const bool isFine =
            checkFolder(place.folder, dir != nullptr ? *dir : *appender.declaration, findings);
        const PropertyLine* const file = configuration.setting(appender, Setting::FILE_NAME);
        const bool namesAFolder = file != nullptr && std::filesystem::path(place.file).has_parent_path();
        if (isFine && namesAFolder) {
            checkFolder(std::filesystem::path(place.describe()).parent_path().string(), *file, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
