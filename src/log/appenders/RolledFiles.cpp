#include "log/appenders/RolledFiles.h"

#include "platform/Clock.h"
#include "platform/Files.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <tuple>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

constexpr std::string_view STAMP_FORM = "00000000T000000Z";
constexpr std::int64_t MICROSECONDS = 1'000'000;

/// How far ahead of the clock the stamp of an existing file may be to count when a new file is named.
constexpr Time FURTHEST_AHEAD(1, Util::TimeUtils::DAY);

bool hasFormOfStamp(std::string_view text) {
    return std::equal(text.begin(), text.end(), STAMP_FORM.begin(), STAMP_FORM.end(),
                      [](char character, char form) {
                          return form == '0' ? character >= '0' && character <= '9' : character == form;
                      });
}

/// \return whether a text is the stamp of a valid time: others put files into the folder, too
bool isStamp(std::string_view text) {
    if (!hasFormOfStamp(text)) {
        return false;
    }
    const auto numberAt = [text](std::size_t begin, std::size_t length) {
        int number = 0;
        std::from_chars(text.data() + begin, text.data() + begin + length, number);
        return number;
    };
    const Platform::CalendarTime time{numberAt(0, 4), numberAt(4, 2),  numberAt(6, 2),
                                      numberAt(9, 2), numberAt(11, 2), numberAt(13, 2)};
    const std::int64_t seconds = Platform::toSeconds(time);
    return seconds >= 0 &&
           RolledFiles::stampOf(Time(static_cast<std::uint64_t>(seconds), Util::TimeUtils::SEC)) == text;
}

/// \return nothing for an empty text, for 0 and for anything that `suffix` would not write
std::optional<std::uint64_t> readNumber(std::string_view text) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    const bool isNumber = read.ec == std::errc() && read.ptr == end && text.front() != '0';
    return isNumber ? std::optional<std::uint64_t>(number) : std::nullopt;
}

bool removeEnd(std::string_view& text, std::string_view end) {
    const bool endsSo = text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
    text.remove_suffix(endsSo ? end.size() : 0);
    return endsSo;
}

/// \param suffix what follows the live file's name and the dot, without ".gz"
std::optional<RolledFile> readSuffix(std::string_view suffix) {
    RolledFile file;
    const std::string_view stamp = suffix.substr(0, STAMP_FORM.size());
    suffix.remove_prefix(stamp.size());
    if (!isStamp(stamp)) {
        return std::nullopt;
    }
    file.stamp = stamp;
    if (suffix.empty()) {
        return file;
    }
    const std::optional<std::uint64_t> number =
        suffix.front() == '-' ? readNumber(suffix.substr(1)) : std::nullopt;
    file.number = number.value_or(0);
    return number ? std::optional<RolledFile>(file) : std::nullopt;
}

bool isOlder(const RolledFile& one, const RolledFile& other) {
    return std::tie(one.stamp, one.number) < std::tie(other.stamp, other.number);
}

/// Sorts, and merges the plain and the packed form of a file into one entry.
void merge(std::vector<RolledFile>& files) {
    std::sort(files.begin(), files.end(), isOlder);
    std::vector<RolledFile> merged;
    for (const RolledFile& file : files) {
        if (merged.empty() || isOlder(merged.back(), file)) {
            merged.push_back(file);
        } else {
            merged.back().isPlain = true;
            merged.back().isPacked = true;
        }
    }
    files.swap(merged);
}

} // namespace

std::string RolledFile::suffix() const {
    return "." + stamp + (number == 0 ? std::string() : "-" + Util::toString(number));
}

RolledFiles::RolledFiles(const std::string& livePath) : livePath_(livePath) {}

bool RolledFiles::list(std::vector<RolledFile>& files, std::vector<std::string>& parts) const {
    const std::filesystem::path live(livePath_);
    const std::string beginning = live.filename().string() + ".";
    std::vector<std::string> names;
    if (!Platform::listFiles(live.has_parent_path() ? live.parent_path().string() : ".", names)) {
        return false;
    }
    for (const std::string& name : names) {
        if (name.compare(0, beginning.size(), beginning) != 0) {
            continue;
        }
        std::string_view suffix = std::string_view(name).substr(beginning.size());
        const bool isPart = removeEnd(suffix, PART);
        const bool isPacked = !isPart && removeEnd(suffix, PACKED);
        std::optional<RolledFile> file = readSuffix(suffix);
        if (file && isPart) {
            parts.push_back(pathOf(*file));
        } else if (file) {
            file->isPacked = isPacked;
            file->isPlain = !isPacked;
            files.push_back(*file);
        }
    }
    merge(files);
    return true;
}

/// A file far in the future, which is not ours or comes from a run with a wrong clock, would give its stamp
/// to all later ones.
/// \param latest the last stamp that counts
void RolledFiles::findLast(const std::string& latest) {
    std::vector<RolledFile> files;
    std::vector<std::string> parts;
    if (!knowsLast_ && list(files, parts)) {
        const auto last = std::find_if(files.rbegin(), files.rend(),
                                       [&latest](const RolledFile& file) { return file.stamp <= latest; });
        last_ = last == files.rend() ? RolledFile() : *last;
        knowsLast_ = true;
    }
}

/// If the folder cannot be listed, names that are taken are skipped.
bool RolledFiles::roll(Time now, RolledFile& rolled) {
    findLast(stampOf(now + FURTHEST_AHEAD));
    rolled = RolledFile();
    rolled.isPlain = true;
    rolled.stamp = std::max(stampOf(now), last_.stamp);
    rolled.number = rolled.stamp == last_.stamp ? last_.number + 1 : 0;
    while (isTaken(rolled) || !Platform::renameFile(livePath_, pathOf(rolled))) {
        if (!isTaken(rolled)) {
            return false;
        }
        ++rolled.number;
    }
    last_ = rolled;
    return true;
}

bool RolledFiles::isTaken(const RolledFile& file) const {
    const std::string path = pathOf(file);
    return Platform::isTaken(path) || Platform::isTaken(path + PACKED);
}

std::string RolledFiles::keep(const AppenderValues& values, std::uint64_t liveSize, Time now,
                              std::vector<RolledFile>& files) const {
    const bool hasAge = values.keepTime != Time() && values.keepTime < now;
    const std::string oldest =
        hasAge ? stampOf(Time(now.microseconds() - values.keepTime.microseconds(), Util::TimeUtils::USEC))
               : std::string();
    const std::string latest = std::max(stampOf(now + FURTHEST_AHEAD), last_.stamp);
    const auto ahead = std::find_if(files.begin(), files.end(),
                                    [&latest](const RolledFile& file) { return file.stamp > latest; });
    const std::vector<RolledFile> uncounted(ahead, files.end());
    files.erase(ahead, files.end());
    std::vector<std::uint64_t> sizes(files.size());
    std::uint64_t size = liveSize;
    for (std::size_t index = 0; index < files.size() && values.keepSize != 0; ++index) {
        sizes[index] = sizeOf(files[index]);
        size += sizes[index];
    }
    std::string problem;
    std::vector<RolledFile> left;
    std::size_t next = 0;
    for (; next < files.size(); ++next) {
        const bool areTooMany = values.keepFiles != 0 && files.size() - next > values.keepFiles;
        const bool areTooLarge = values.keepSize != 0 && size > values.keepSize;
        if (!areTooMany && !areTooLarge && files[next].stamp >= oldest) {
            break;
        }
        if (!remove(pathOf(files[next]))) {
            problem = problem.empty() ? pathOf(files[next]) : problem;
            left.push_back(files[next]);
        }
        size -= sizes[next];
    }
    files.erase(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(next));
    files.insert(files.begin(), left.begin(), left.end());
    files.insert(files.end(), uncounted.begin(), uncounted.end());
    return problem;
}

std::uint64_t RolledFiles::sizeOf(const RolledFile& file) const {
    std::uint64_t size = 0;
    for (const std::string& path : {pathOf(file), pathOf(file) + PACKED}) {
        const std::optional<Platform::FileStatus> status = Platform::statFile(path);
        size += status ? status->size : 0;
    }
    return size;
}

/// The plain file goes first: its packing gives up if the plain file is gone. A packed file that appears just
/// then is deleted with the next roll.
bool RolledFiles::remove(const std::string& path) {
    const bool isPlainGone = Platform::removeFile(path) || !Platform::isTaken(path);
    const bool isPackedGone = Platform::removeFile(path + PACKED) || !Platform::isTaken(path + PACKED);
    return isPlainGone && isPackedGone;
}

std::string RolledFiles::stampOf(Time time) {
    const Platform::CalendarTime utc =
        Platform::toCalendarTime(static_cast<std::int64_t>(time.microseconds()) / MICROSECONDS);
    return Util::format("%04d%02d%02dT%02d%02d%02dZ", utc.year, utc.month, utc.day, utc.hour, utc.minute,
                        utc.second);
}

std::string RolledFiles::livePathOf(const std::string& path) {
    const std::string plain = plainPathOf(path);
    return plain.substr(0, plain.empty() ? 0 : plain.rfind('.'));
}

std::string RolledFiles::plainPathOf(const std::string& path) {
    std::string_view plain(path);
    if (!removeEnd(plain, PART)) {
        removeEnd(plain, PACKED);
    }
    const std::size_t dot = plain.rfind('.');
    const bool isRolled = dot != std::string_view::npos && readSuffix(plain.substr(dot + 1));
    return isRolled ? std::string(plain) : std::string();
}

} // namespace Log
} // namespace ZAV
