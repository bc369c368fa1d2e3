#include "inputs/LogFiles.h"

#include "log/appenders/RolledFiles.h"
#include "platform/Files.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

namespace fs = std::filesystem;

constexpr char NEWEST = '0';
constexpr char OLDEST = '9';

/// \return true for anything but a folder, also for a dangling symbolic link
bool isThere(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored)) && !fs::is_directory(path, ignored);
}

bool isFile(const std::string& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return fs::exists(status) && !fs::is_directory(status);
}

bool exists(const std::string& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

bool hasSeries(const std::string& base) {
    for (char digit = NEWEST; digit <= OLDEST; ++digit) {
        if (isThere(base + digit)) {
            return true;
        }
    }
    return false;
}

bool isAmong(const std::vector<LogFile>& files, const LogFile& wanted) {
    return std::any_of(files.begin(), files.end(), [&wanted](const LogFile& file) {
        return file.file.identity() == wanted.file.identity();
    });
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// Without this check, whoever may write to the folder of a log could have any file shown by its readers.
/// \return the target of a path that the user has not typed, if its symbolic links stay within its folder; empty if one
///         leads out
std::string withinFolder(const std::string& path, std::string& problem) {
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(path, error))) {
        return path;
    }
    const fs::path target = fs::canonical(path, error);
    const fs::path folder = error ? fs::path() : fs::canonical(folderOf(path), error);
    if (error) {
        problem = error.message();
        return "";
    }
    if (target.parent_path() != folder) {
        problem = "Is a symbolic link out of its folder";
        return "";
    }
    return target.string();
}

/// \param file is open
/// \return false if this program cannot read its format
bool isReadable(LogFile& file, std::string& problem) {
    if (file.file.isQueue()) {
        file.layout = LineForm(); // its lines have their own form
    }
    return !file.file.isPackedOtherwise(problem);
}

bool openFound(LogFile& file, std::string& problem) {
    problem.clear();
    const std::string path = withinFolder(file.path, problem);
    return !path.empty() && file.file.open(path, problem, LogContent::Links::REFUSED) &&
           isReadable(file, problem);
}

/// A file of that name must neither hide the series nor lead out of its folder, since whoever may write there
/// can create one.
void addFileOfBaseName(std::vector<LogFile>& files, const InputSpec& input,
                       std::vector<std::string>& problems) {
    LogFile file;
    file.path = input.path;
    file.layout = input.layout;
    std::string problem;
    if (!isThere(file.path)) {
        return;
    }
    if (!openFound(file, problem)) {
        problems.push_back(file.path + ": " + problem);
    } else if (!isAmong(files, file)) {
        files.insert(files.begin(), std::move(file));
    }
}

/// \return true if the path names a file that a series of longer names must not claim, such as app.log.1 beside
///         app.log.10
bool endsInDigit(const std::string& path) {
    return !path.empty() && path.back() >= NEWEST && path.back() <= OLDEST;
}

/// \return why it is unknown whether a folder has files of the input; empty if it can be read and has none yet
std::string whyUnknown(const InputSpec& input) {
    const std::string folder = folderOf(input.path).string();
    std::string problem;
    if (Platform::isReadableDirectory(folder, problem)) {
        return "";
    }
    std::error_code ignored;
    const std::string origin = fs::path(folder).is_relative() ? " (relative paths are taken from " +
                                                                    fs::current_path(ignored).string() + ")"
                                                              : "";
    return folder + ": " + problem + origin;
}

bool openOne(LogFile& file, const InputSpec& input, std::string& problem) {
    if (input.kind != InputSpec::STANDARD_INPUT && !input.mayBeLink) {
        return openFound(file, problem);
    }
    if (input.kind != InputSpec::STANDARD_INPUT && !isThere(file.path) &&
        Log::RolledFiles::plainPathOf(file.path) == file.path) {
        file.path += isThere(file.path + Log::RolledFiles::PACKED) ? Log::RolledFiles::PACKED : ""; // by now
    }
    const bool isOpen = input.kind == InputSpec::STANDARD_INPUT ? file.file.openStandardInput(problem)
                                                                : file.file.open(file.path, problem);
    file.offset = isOpen && input.kind == InputSpec::STANDARD_INPUT ? file.file.position() : 0;
    return isOpen && isReadable(file, problem);
}

/// \return the files that were rolled away from the one at a path, the oldest first
std::vector<LogFile> findRolled(const InputSpec& input) {
    const Log::RolledFiles series(input.path);
    std::vector<Log::RolledFile> rolled;
    std::vector<std::string> parts;
    series.list(rolled, parts);
    std::vector<LogFile> files;
    for (const Log::RolledFile& one : rolled) {
        LogFile& file = files.emplace_back();
        file.rolledPath = series.pathOf(one);
        file.path = file.rolledPath;
        file.layout = input.layout;
    }
    return files;
}

/// A file that is rolled after it was opened is found again under its new name.
bool isAmongRolled(const std::vector<LogFile>& rolled, const LogFile& live) {
    return std::any_of(rolled.rbegin(), rolled.rend(), [&live](const LogFile& file) {
        Platform::FileIdentity identity;
        return Platform::identifyFile(file.rolledPath, identity) && identity == live.file.identity();
    });
}

} // namespace

InputSpec::Kind resolve(const InputSpec& input) {
    if (input.kind != InputSpec::FILE_OR_SERIES) {
        return input.kind;
    }
    const bool isThereAsFile = isFile(input.path);
    if (hasSeries(input.path) && !(isThereAsFile && endsInDigit(input.path))) {
        return InputSpec::SERIES;
    }
    return isThereAsFile ? InputSpec::FILE : InputSpec::FILE_OR_SERIES;
}

/// The packed file appears before the plain one is removed.
bool openRolled(LogFile& file, std::string& problem) {
    if (file.file.isOpen()) {
        return true;
    }
    file.path = file.rolledPath;
    if (openFound(file, problem)) {
        return true;
    }
    if (isThere(file.path)) {
        return false;
    }
    file.path += Log::RolledFiles::PACKED;
    if (openFound(file, problem) && !file.file.isPacked()) {
        file.file.close();
        problem = "Not a packed file";
    }
    return file.file.isOpen();
}

void closeRolled(LogFile& file) {
    if (!file.rolledPath.empty()) {
        file.file.close();
    }
}

namespace {

/// Opens the files of a series, the oldest first. A regular file of exactly the base name comes before them,
/// if the input may also name a file.
///
/// A file that a concurrent rotation shows under two names is returned once; none is missed.
/// \param problems receives a line for each member that cannot be read, is no regular file, or is a symbolic link out
/// of its folder, and for such a link of the base name
std::vector<LogFile> openSeries(const InputSpec& input, std::vector<std::string>& problems) {
    std::vector<LogFile> files;
    // From the newest to the oldest, as a rotation renames files from the oldest to the newest: a file that
    // is renamed meanwhile is met twice rather than not at all. If it is renamed while it is being opened,
    // its name goes to the next file, or to none, which is no error.
    for (char digit = NEWEST; digit <= OLDEST; ++digit) {
        LogFile member;
        member.path = input.path + digit;
        member.layout = input.layout;
        if (!isThere(member.path)) {
            continue;
        }
        std::string problem;
        const bool isOpen = openFound(member, problem) || openFound(member, problem);
        if (isOpen && !isAmong(files, member)) {
            files.push_back(std::move(member));
        } else if (!isOpen && isThere(member.path)) {
            problems.push_back(member.path + ": " + problem);
        }
    }
    std::reverse(files.begin(), files.end());
    if (input.kind == InputSpec::FILE_OR_SERIES) {
        addFileOfBaseName(files, input, problems);
    }
    return files;
}

/// Opens the file at a path, after those that were rolled away from it. Tries twice, since a rotation may put
/// the next file there after the first attempt.
void openWithRolled(const InputSpec& input, std::vector<LogFile>& files, std::vector<std::string>& problems) {
    LogFile file;
    file.path = input.path;
    file.layout = input.layout;
    std::string problem;
    bool isOpen = openOne(file, input, problem);
    bool isMissing = !isOpen && !exists(file.path);
    if (!isOpen && !isMissing) {
        isOpen = openOne(file, input, problem);
        isMissing = !isOpen && !exists(file.path);
    }
    if (input.kind != InputSpec::STANDARD_INPUT) {
        files = findRolled(input);
    }
    const bool mayBeMissing = isMissing && (input.mayBeMissing || !files.empty());
    if (isOpen && !isAmongRolled(files, file)) {
        files.push_back(std::move(file));
    } else if (!isOpen && !mayBeMissing) {
        problems.push_back(file.path + ": " + problem);
    }
}

} // namespace

std::vector<LogFile> openAll(const InputSpec& input, std::vector<std::string>& problems) {
    std::vector<LogFile> files;
    const std::size_t problemsBefore = problems.size();
    if (resolve(input) == InputSpec::SERIES && (hasSeries(input.path) || input.mayBeMissing)) {
        files = openSeries(input, problems);
    } else {
        openWithRolled(input, files, problems);
    }
    const std::string unknown =
        files.empty() && problems.size() == problemsBefore ? whyUnknown(input) : std::string();
    if (!unknown.empty()) {
        problems.push_back(unknown);
    }
    return files;
}

} // namespace Tools
} // namespace ZAV
