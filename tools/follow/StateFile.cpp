#include "follow/StateFile.h"

#include "Outcome.h"
#include "platform/Files.h"
#include "platform/OpenFiles.h"
#include "zav-util/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

using Json = nlohmann::json;

constexpr int VERSION = 1;

/// JSON text is UTF-8. For any other path, the key is a NUL, which no path contains, followed by one
/// character per byte.
std::string toKey(const std::string& path) {
    for (std::string_view rest = path; !rest.empty();) {
        const std::size_t size = Util::firstCodePoint(rest).size;
        if (size == 0) {
            std::string key(1, '\0');
            for (const char byte : path) {
                const auto value = static_cast<unsigned char>(byte);
                key += value < 0x80 ? std::string(1, byte)
                                    : std::string{static_cast<char>(0xc0 | value >> 6),
                                                  static_cast<char>(0x80 | (value & 0x3f))};
            }
            return key;
        }
        rest.remove_prefix(size);
    }
    return path;
}

Json toJson(const FilePlace& place) {
    return {{"device", place.identity().device},
            {"index", place.identity().index},
            {"offset", place.offset()},
            {"mark", place.mark()}};
}

FilePlace toPlace(const Json& json) {
    const Platform::FileIdentity identity = {json.at("device").get<std::uint64_t>(),
                                             json.at("index").get<std::uint64_t>()};
    return FilePlace(identity, json.at("offset").get<std::uint64_t>(), json.at("mark").get<std::uint64_t>());
}

} // namespace

StateFile::StateFile(std::string path) : path_(std::move(path)) {
    std::error_code problem;
    existed_ = std::filesystem::exists(path_, problem);
    if (problem) {
        throw Failure(path_ + ": " + problem.message());
    }
    if (std::filesystem::is_symlink(path_, problem) && existed_) {
        path_ = std::filesystem::canonical(path_).string();
    }
    std::string ignored; // reported when the state is written
    lock(ignored);
    existed_ = std::filesystem::exists(path_, problem);
    if (existed_) {
        load();
    }
}

/// \throw Failure if another process holds the lock
void StateFile::lock(std::string& problem) {
    const std::string path = path_ + ".lock";
    std::string reason;
    switch (lock_.acquire(path, reason)) {
    case Platform::FileLock::HELD:
        return;
    case Platform::FileLock::HELD_BY_ANOTHER:
        throw Failure(path_ +
                      ": another zav-log follow keeps its state there; give each one a file of its own");
    case Platform::FileLock::CANNOT_BE_DECIDED:
        problem = path + ": " + reason + "; another zav-log follow with this state would go unnoticed";
    }
}

std::string StateFile::read() const {
    Platform::InputFile file;
    std::string problem;
    std::string content;
    if (file.open(path_, problem)) {
        char buffer[4096];
        std::int64_t count = 0;
        while ((count = file.readAt(content.size(), buffer, sizeof buffer, problem)) > 0) {
            content.append(buffer, static_cast<std::size_t>(count));
        }
    }
    if (!problem.empty()) {
        throw Failure(path_ + ": the state cannot be read: " + problem +
                      "; fix that, or remove the file to start over");
    }
    return content;
}

void StateFile::load() {
    const std::string content = read();
    try {
        const Json json = Json::parse(content);
        if (json.at("version") != VERSION) {
            throw Failure(path_ +
                          ": the state is of another version of this program; remove the file to start over");
        }
        for (const auto& [input, place] : json.at("inputs").items()) {
            places_[input] = toPlace(place);
        }
    } catch (const Json::exception&) {
        throw Failure(path_ + ": this is no state of zav-log follow; remove the file to start over");
    }
}

std::optional<FilePlace> StateFile::find(const std::string& input) const {
    const auto found = places_.find(toKey(input));
    return found == places_.end() ? std::nullopt : std::optional<FilePlace>(found->second);
}

void StateFile::set(const std::string& input, const FilePlace& place) {
    FilePlace& kept = places_[toKey(input)];
    const bool isSame =
        kept.identity() == place.identity() && kept.offset() == place.offset() && kept.mark() == place.mark();
    if (!isSame) {
        kept = place;
        isChanged_ = true;
    }
}

std::string StateFile::text() const {
    Json inputs = Json::object();
    for (const auto& [input, place] : places_) {
        inputs[input] = toJson(place);
    }
    const Json json = {{"version", VERSION}, {"inputs", inputs}};
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

void StateFile::prepare() {
    if (!isChanged_) {
        return;
    }
    problem_.clear();
    lock(problem_);
    std::string reason;
    isPrepared_ = Platform::writeReplacement(path_, text(), reason);
    if (!isPrepared_) {
        fail(reason);
    }
}

void StateFile::save() {
    if (!isPrepared_) {
        return;
    }
    isPrepared_ = false;
    std::string reason;
    if (Platform::replaceFile(path_, reason)) {
        isChanged_ = false;
    } else {
        fail(reason);
    }
}

void StateFile::fail(const std::string& reason) {
    problem_ = path_ + ": cannot keep the state: " + reason + "; going on, and trying again";
}

} // namespace Tools
} // namespace ZAV
