#include "check/Checks.h"
#include "config/Appenders.h"
#include "log/config/ConfigurationKeys.h"
#include "platform/Files.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

namespace fs = std::filesystem;
namespace Setting = Log::AppenderSetting;

/// \return false, after adding a warning, if no files can be made in a folder
bool checkFolder(const std::string& folder, const PropertyLine& line, Findings& findings) {
    std::error_code problem;
    if (!fs::is_directory(folder, problem)) {
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
        const bool namesAFolder = file != nullptr && fs::path(place.file).has_parent_path();
        if (isFine && namesAFolder) {
            checkFolder(fs::path(place.describe()).parent_path().string(), *file, findings);
        }
    }
}

/// What a file appender writes to, by its canonical path.
struct WrittenFile {
    const DeclaredAppender* appender;
    AppenderPlace::Kind kind;
    std::string path;
    char highestDigit; ///< of a series
};

/// Indexes the appenders' files by path, so that they need not be compared pairwise.
class WrittenFiles {
public:
    void add(const WrittenFile& file) {
        (file.kind == AppenderPlace::SERIES ? series_ : single_)[file.path].push_back(files_.size());
        files_.push_back(file);
    }

    /// \return those that share a file with this one, in the order in which they were added
    std::vector<const WrittenFile*> sharing(const WrittenFile& other) const {
        std::vector<std::size_t> found;
        if (other.kind == AppenderPlace::SERIES) {
            append(found, series_, other.path);
            for (char digit = '0'; digit <= other.highestDigit; ++digit) {
                append(found, single_, other.path + digit);
            }
        } else {
            append(found, single_, other.path);
            const std::size_t own = found.size();
            append(found, series_, other.path.substr(0, other.path.size() - 1));
            const char digit = other.path.back();
            found.erase(std::remove_if(found.begin() + static_cast<std::ptrdiff_t>(own), found.end(),
                                       [this, digit](std::size_t index) {
                                           return digit < '0' || digit > files_[index].highestDigit;
                                       }),
                        found.end());
        }
        std::sort(found.begin(), found.end());
        std::vector<const WrittenFile*> result;
        for (const std::size_t index : found) {
            result.push_back(&files_[index]);
        }
        return result;
    }

private:
    using ByPath = std::map<std::string, std::vector<std::size_t>>;

    static void append(std::vector<std::size_t>& found, const ByPath& files, const std::string& path) {
        const auto entry = files.find(path);
        if (entry != files.end()) {
            found.insert(found.end(), entry->second.begin(), entry->second.end());
        }
    }

    std::vector<WrittenFile> files_;
    ByPath series_;
    ByPath single_;
};

void checkSharedFiles(const Configuration& configuration, Findings& findings) {
    WrittenFiles earlier;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const AppenderPlace place(appender.name, configuration.file().properties());
        if (place.kind == AppenderPlace::NO_FILE) {
            continue;
        }
        const WrittenFile own{&appender, place.kind, canonicalPath(fs::path(place.folder) / place.file),
                              place.highestDigit};
        for (const WrittenFile* const other : earlier.sharing(own)) {
            findings.addWarning(later(*appender.declaration, *other->appender->declaration), "shared-file",
                                "the appenders '" + other->appender->name + "' and '" + appender.name +
                                    "' write to one file, " + place.describe());
        }
        earlier.add(own);
    }
}

} // namespace

std::string canonicalPath(const fs::path& path) {
    std::error_code problem;
    const fs::path canonical = fs::weakly_canonical(fs::absolute(path), problem);
    return problem ? path.string() : canonical.string();
}

void checkFiles(const Configuration& configuration, Findings& findings) {
    checkFolders(configuration, findings);
    checkSharedFiles(configuration, findings);
}

} // namespace Tools
} // namespace ZAV
