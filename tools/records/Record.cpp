#include "records/Record.h"

#include "log/text/PackedPairs.h"
#include "platform/Clock.h"
#include "records/TextLines.h"

#include <algorithm>
#include <iterator>

namespace ZAV {
namespace Tools {

namespace {

bool isControl(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
}

} // namespace

void StructuredRecord::setTime(std::int64_t microseconds) {
    constexpr std::int64_t MICROSECONDS_PER_SECOND = 1000000;
    const std::int64_t offset = Platform::utcOffset(microseconds / MICROSECONDS_PER_SECOND);
    const std::int64_t local = microseconds + offset * MICROSECONDS_PER_SECOND;
    time_ = civilText(std::clamp(local, std::int64_t{0}, LATEST_TIME));
    instant_ = microseconds;
}

bool StructuredRecord::setLevel(std::string_view word) {
    hasLevel = findLevelNamed(word, level_);
    return hasLevel;
}

/// Only the message may contain line feeds: neither what precedes it nor the keys after it may look like
/// another record.
void StructuredRecord::show() {
    const auto add = [this](std::string_view word) {
        shown_ += ' ';
        std::replace_copy_if(word.begin(), word.end(), std::back_inserter(shown_), isControl, '?');
    };
    shown_ = time_;
    if (!logger.empty()) {
        add(logger);
    }
    const bool mayHavePlace = hasLevel || !isTypeKnown;
    if (mayHavePlace && !(file.empty() && line.empty())) {
        add(file);
        shown_ += line.empty() ? "" : ':' + line;
    }
    if (hasLevel) {
        add(Log::Level::toString(level_));
    }
    shown_.append(" ").append(message);
    textBegin_ = shown_.size() - message.size();
    bool needsBlank = !message.empty();
    for (const RecordPair& value : values) {
        shown_ += needsBlank ? " " : "";
        needsBlank = true;
        std::string key = value.key;
        std::replace_if(key.begin(), key.end(), isControl, '?');
        Log::appendPair(shown_, {key, std::string_view(value.text)});
    }
}

void StructuredRecord::addLines(std::string_view lines) {
    shown_.append("\n").append(lines);
    message.append("\n").append(lines);
}

Fields StructuredRecord::fields() const {
    Fields fields;
    fields.program = program;
    fields.pid = pid;
    fields.host = host;
    fields.logger = logger;
    fields.file = file;
    fields.line = line;
    fields.thread = thread;
    fields.text = std::string_view(shown_).substr(textBegin_);
    fields.message = message;
    fields.values = &values;
    fields.context = &context;
    fields.isTypeKnown = isTypeKnown;
    fields.hasLevel = hasLevel;
    fields.level = level_;
    return fields;
}

} // namespace Tools
} // namespace ZAV
