#include "records/FieldsLine.h"

#include "records/TextLines.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

namespace {

using Log::Column;

/// \param rest of a line; the word and the blank after it are removed
/// \param size of the word
std::string_view takeWord(std::string_view& rest, std::size_t size) {
    const std::string_view word = rest.substr(0, size);
    rest.remove_prefix(std::min(rest.size(), size + 1));
    return word;
}

bool takeNumber(std::string& place, std::string_view word) {
    place = word;
    return !word.empty() && word.size() < 20 &&
           std::all_of(word.begin(), word.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
}

/// A point in time from the column `utc` takes precedence over a local time from `time`.
bool takeTime(StructuredRecord& record, std::string_view time) {
    if (!startsWithTime(time)) {
        return false;
    }
    if (!record.instant()) {
        record.setTime(time);
    }
    return true;
}

bool takeUtc(StructuredRecord& record, std::string_view word) {
    const std::optional<std::int64_t> time = readIsoTime(word);
    if (time) {
        record.setTime(*time);
    }
    return time.has_value();
}

bool takeLevel(StructuredRecord& record, std::string_view word) {
    record.isTypeKnown = true;
    return word == "-" || record.setLevel(word);
}

bool takePlace(StructuredRecord& record, std::string_view word) {
    if (word != "-") {
        Fields place;
        parseLocation(word, place);
        record.file = place.file;
        record.line = place.line;
    }
    return true;
}

/// \return false if the word is invalid for the column
bool takeColumn(StructuredRecord& record, Column column, std::string_view word) {
    switch (column) {
    case Column::TIME:
        return takeTime(record, word);
    case Column::UTC:
        return takeUtc(record, word);
    case Column::LEVEL:
        return takeLevel(record, word);
    case Column::LOGGER:
        record.logger = word;
        return true;
    case Column::THREAD:
        return takeNumber(record.thread, word);
    case Column::PROCESS:
        record.program = word;
        return true;
    case Column::PID:
        return takeNumber(record.pid, word);
    case Column::HOST:
        record.host = word;
        return true;
    case Column::PLACE:
        return takePlace(record, word);
    default:
        return false;
    }
}

/// \return whether a column is one word, or two for the time
bool isWord(Column column) {
    return column != Column::CONTEXT && column != Column::VALUES && column != Column::MESSAGE &&
           column != Column::TEXT;
}

} // namespace

std::shared_ptr<StructuredRecord> readFieldsLine(std::string_view line, const std::vector<Column>& columns) {
    auto record = std::make_shared<StructuredRecord>();
    std::string_view rest = line;
    for (const Column column : columns) {
        if (!isWord(column)) {
            break;
        }
        const std::size_t size =
            column == Column::TIME ? TIME_STAMP_LENGTH : std::min(rest.find(' '), rest.size());
        const bool endsThere = rest.size() <= size || rest[size] == ' ';
        if (!endsThere || !takeColumn(*record, column, takeWord(rest, size))) {
            return nullptr;
        }
    }
    if (record->time().empty()) {
        return nullptr;
    }
    record->message = rest;
    record->show();
    return record;
}

bool beginWithWord(const std::vector<Column>& columns) {
    return !columns.empty() && isWord(columns.front());
}

} // namespace Tools
} // namespace ZAV
