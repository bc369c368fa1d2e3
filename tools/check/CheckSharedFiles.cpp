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
    fs::path path;
};

/// What does not exist yet keeps its name.
fs::path commonForm(const AppenderPlace& place) {
    std::error_code problem;
    fs::path path = fs::weakly_canonical(fs::absolute(place.folder) / place.file, problem);
    return problem ? fs::path(place.folder) / place.file : path;
}

/// \return true if a file is a member of a series
bool isMember(const fs::path& file, const fs::path& series) {
    const std::string name = file.string();
    const std::string base = series.string();
    return name.size() == base.size() + 1 && name.compare(0, base.size(), base) == 0 && name.back() >= '0' &&
           name.back() <= '9';
}

bool shareAFile(const FilePlace& a, const FilePlace& b) {
    if (a.kind == b.kind) {
        return a.path == b.path;
    }
    return a.kind == AppenderPlace::SERIES ? isMember(b.path, a.path) : isMember(a.path, b.path);
}

} // namespace

void checkSharedFiles(const Configuration& configuration, Findings& findings) {
    std::vector<FilePlace> earlier;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const AppenderPlace place(appender.name, configuration.file().properties());
        if (place.kind == AppenderPlace::STREAM) {
            continue;
        }
        const FilePlace own{&appender, place.kind, commonForm(place)};
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
