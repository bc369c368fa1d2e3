#include "check/Checks.h"
#include "config/AppenderPlace.h"

#include <filesystem>
#include <system_error>

namespace ZAV {
namespace Tools {

namespace {

namespace fs = std::filesystem;

/// The place of a file appender, with its path in the one form that all ways to it have in common.
struct FilePlace {
    const DeclaredAppender* appender;
    AppenderPlace::Kind kind;
    std::string path;
    char highestDigit; ///< of a series
};

/// What does not exist yet keeps its name.
std::string commonForm(const AppenderPlace& place) {
    std::error_code problem;
    const fs::path path = fs::weakly_canonical(fs::absolute(place.folder) / place.file, problem);
    return problem ? place.folder + '/' + place.file : path.string();
}

bool isMember(const std::string& file, const FilePlace& series) {
    const std::string& base = series.path;
    return file.size() == base.size() + 1 && file.compare(0, base.size(), base) == 0 && file.back() >= '0' &&
           file.back() <= series.highestDigit;
}

bool shareAFile(const FilePlace& a, const FilePlace& b) {
    if (a.kind == AppenderPlace::SERIES && b.kind != AppenderPlace::SERIES) {
        return isMember(b.path, a);
    }
    return b.kind == AppenderPlace::SERIES && a.kind != b.kind ? isMember(a.path, b) : a.path == b.path;
}

} // namespace

void checkSharedFiles(const Configuration& configuration, Findings& findings) {
    std::vector<FilePlace> earlier;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const AppenderPlace place(appender.name, configuration.file().properties());
        if (place.kind == AppenderPlace::NO_FILE) {
            continue;
        }
        const FilePlace own{&appender, place.kind, commonForm(place), place.highestDigit};
        for (const FilePlace& other : earlier) {
            if (shareAFile(own, other)) {
                findings.addWarning(later(*appender.declaration, *other.appender->declaration), "shared-file",
                                    "the appenders '" + other.appender->name + "' and '" + appender.name +
                                        "' write to one file, " + place.describe());
            }
        }
        earlier.push_back(own);
    }
}

} // namespace Tools
} // namespace ZAV
