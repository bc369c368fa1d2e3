#include "inputs/LogFiles.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

constexpr char NEWEST = '0';
constexpr char OLDEST = '9';

bool isFile(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool exists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

bool hasSeries(const std::string& base) {
    for (char digit = NEWEST; digit <= OLDEST; ++digit) {
        if (isFile(base + digit)) {
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

} // namespace

InputSpec::Kind resolve(const InputSpec& input) {
    if (input.kind != InputSpec::FILE_OR_SERIES || isFile(input.path)) {
        return input.kind == InputSpec::SERIES ? InputSpec::SERIES : InputSpec::FILE;
    }
    return hasSeries(input.path) ? InputSpec::SERIES : InputSpec::FILE_OR_SERIES;
}

/// From the newest to the oldest, as a rotation renames files from the oldest to the newest: a file on its
/// way up is met twice rather than not at all. One that goes up while it is looked at leaves its name to the
/// next one, or to none, which is no problem.
std::vector<LogFile> openSeries(const InputSpec& input, std::vector<std::string>& problems) {
    std::vector<LogFile> files;
    for (char digit = NEWEST; digit <= OLDEST; ++digit) {
        LogFile member;
        member.path = input.path + digit;
        member.layout = input.layout;
        if (!isFile(member.path)) {
            continue;
        }
        std::string problem;
        const bool isOpen = member.file.open(member.path, problem) || member.file.open(member.path, problem);
        if (isOpen && !isAmong(files, member)) {
            files.push_back(std::move(member));
        } else if (!isOpen && isFile(member.path)) {
            problems.push_back(member.path + ": " + problem);
        }
    }
    std::reverse(files.begin(), files.end());
    return files;
}

std::vector<LogFile> openAll(const InputSpec& input, std::vector<std::string>& problems) {
    if (resolve(input) == InputSpec::SERIES && (hasSeries(input.path) || input.mayBeMissing)) {
        return openSeries(input, problems);
    }
    std::vector<LogFile> files;
    LogFile file;
    file.path = input.path;
    file.layout = input.layout;
    std::string problem;
    if (file.file.open(file.path, problem)) {
        files.push_back(std::move(file));
    } else if (!input.mayBeMissing || exists(file.path)) {
        problems.push_back(file.path + ": " + problem);
    }
    return files;
}

} // namespace Tools
} // namespace ZAV
