#include "check/Checks.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/DispatcherSettings.h"
#include "log/config/ValueReaders.h"
#include "log/queuefile/QueueFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

namespace ZAV {
namespace Tools {

namespace {

namespace fs = std::filesystem;
namespace Option = Log::DispatcherOption;
namespace Setting = Log::AppenderSetting;

constexpr std::size_t USUAL_MESSAGE = 100; ///< bytes

const PropertyLine* lineOf(const Configuration& configuration, const char* option) {
    return configuration.file().find(Log::dispatcherKey(option));
}

bool leavesNoRoom(const std::string& maxQueueSize) {
    const Log::LeadingNumber<std::int32_t> size = Log::readLeadingSigned(maxQueueSize);
    return size.isWhole && (size.value == 0 || size.value == 1);
}

/// \return the line that makes an appender asynchronous; nullptr if it is synchronous
const PropertyLine* asynchronousLine(const Configuration& configuration, const DeclaredAppender& appender) {
    const PropertyLine* const line = configuration.setting(appender, Setting::ASYNCHRONOUS);
    return line != nullptr && Log::readBoolean(line->value).value_or(false) ? line : nullptr;
}

/// \return the first line that makes an appender asynchronous; nullptr if there is none
const PropertyLine* firstAsynchronous(const Configuration& configuration) {
    const PropertyLine* first = nullptr;
    for (const DeclaredAppender& appender : configuration.appenders()) {
        const PropertyLine* const line = asynchronousLine(configuration, appender);
        if (line != nullptr && (first == nullptr || line->number < first->number)) {
            first = line;
        }
    }
    return first;
}

/// Only the consumer thread works in batches. The other value is what a synchronous appender does anyway.
void checkFlush(const Configuration& configuration, const DeclaredAppender& appender, Findings& findings) {
    const PropertyLine* const flush = configuration.setting(appender, Setting::FLUSH);
    const bool isRead = flush != nullptr && (appender.reader & Log::READ_BY_FILE_APPENDERS) != 0;
    if (isRead && flush->value == "batch" && asynchronousLine(configuration, appender) == nullptr) {
        findings.addWarning(*flush, "ignored-key",
                            "has no effect without '" +
                                Log::appenderKey(appender.name, Setting::ASYNCHRONOUS) + " = true'");
    }
}

void checkMessages(const Configuration& configuration, Findings& findings) {
    const PropertyLine* const size = lineOf(configuration, Option::MAX_QUEUE_SIZE);
    const PropertyLine* const asynchronous = firstAsynchronous(configuration);
    if (size != nullptr && asynchronous != nullptr && leavesNoRoom(size->value)) {
        findings.addWarning(later(*size, *asynchronous), "no-queue",
                            "a queue of " + size->value + " has no room for the messages of '" +
                                asynchronous->key + "'");
    }
    for (const DeclaredAppender& appender : configuration.appenders()) {
        checkFlush(configuration, appender, findings);
    }
}

void warn(Findings& findings, const PropertyLine& line, const std::string& text) {
    findings.addWarning(line, "queue-file", text);
}

/// \return whether a file is empty or begins like a queue file; true if it cannot be read
bool mayHoldQueue(const fs::path& path) {
    std::string beginning(Log::StoredQueue::BEGINNING, ' ');
    std::ifstream file(path, std::ios::binary);
    const bool isWhole =
        static_cast<bool>(file.read(beginning.data(), static_cast<std::streamsize>(beginning.size())));
    return !file.is_open() || file.gcount() == 0 || (isWhole && Log::StoredQueue::isOne(beginning));
}

void checkPlace(const PropertyLine& line, Findings& findings) {
    std::error_code problem;
    const fs::path path = fs::absolute(line.value);
    const fs::file_status status = fs::symlink_status(path, problem);
    if (!fs::is_directory(path.parent_path(), problem)) {
        warn(findings, line, "there is no directory '" + path.parent_path().string() + "'");
    } else if (fs::exists(status) && !fs::is_regular_file(status)) {
        warn(findings, line, "'" + path.string() + "' is no regular file");
    } else if (fs::exists(status) && !mayHoldQueue(path)) {
        warn(findings, line, "'" + path.string() + "' is not the file of a queue");
    }
}

void checkBounds(const PropertyLine& line, std::uint64_t bytes, Findings& findings) {
    if (bytes != 0 && bytes < Log::QueueFile::LEAST_SIZE) {
        findings.addWarning(line, "out-of-range",
                            line.value + " counts as 64 KB, the least that a queue file has");
    }
    if (bytes > Log::QueueFile::MAX_SIZE && bytes != std::numeric_limits<std::uint64_t>::max()) {
        findings.addWarning(line, "out-of-range",
                            line.value + " counts as 64 GB, the most that a queue file has");
    }
}

/// The defaults are consistent with each other; an invalid value is a finding of its own.
void checkSize(const Configuration& configuration, Findings& findings) {
    const PropertyLine* const size = lineOf(configuration, Option::QUEUE_FILE_SIZE);
    const PropertyLine* const limit = lineOf(configuration, Option::MAX_QUEUE_SIZE);
    const auto bytes = size != nullptr ? Log::readSizeLimit(size->value) : Log::QueueFileSettings().size;
    if (size != nullptr) {
        checkBounds(*size, bytes.value_or(0), findings);
    }
    const auto messages =
        limit != nullptr ? Log::readLeadingSigned(limit->value)
                         : Log::readLeadingSigned(std::to_string(Log::DispatcherSettings().maxQueueSize));
    if (bytes.value_or(0) == 0 || !messages.isWhole || messages.value < 0 ||
        (size == nullptr && limit == nullptr)) {
        return;
    }
    const PropertyLine& last = size == nullptr ? *limit : limit == nullptr ? *size : later(*size, *limit);
    const auto count = static_cast<std::uint64_t>(messages.value);
    if (Log::QueueFile::capacity(*bytes, USUAL_MESSAGE) < count) {
        warn(findings, last,
             "a queue file of " + std::to_string(*bytes) + " bytes cannot hold " + std::to_string(count) +
                 " messages of " + std::to_string(USUAL_MESSAGE) + " bytes");
    }
}

void checkFile(const Configuration& configuration, const std::string& fileName, QueueFilesOfOthers& others,
               Findings& findings) {
    const PropertyLine* const line = lineOf(configuration, Option::QUEUE_FILE);
    if (line == nullptr || line->value.empty()) {
        return;
    }
    checkPlace(*line, findings);
    checkSize(configuration, findings);
    const auto [other, isNew] = others.try_emplace(canonicalPath(line->value), fileName);
    if (!isNew && other->second != fileName) {
        warn(findings, *line,
             "'" + other->second + "' names this file, too; one program at a time can have it");
    }
}

} // namespace

void checkQueue(const Configuration& configuration, const std::string& fileName, QueueFilesOfOthers& others,
                Findings& findings) {
    checkMessages(configuration, findings);
    checkFile(configuration, fileName, others, findings);
}

} // namespace Tools
} // namespace ZAV
