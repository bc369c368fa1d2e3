#include "printers/JsonPrinter.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

using Object = nlohmann::ordered_json;

std::string asJson(const Object& value) {
    return value.dump(-1, ' ', false, Object::error_handler_t::replace);
}

void addText(Object& object, const char* key, std::string_view value) {
    if (!value.empty()) {
        object[key] = value;
    }
}

void addNumber(Object& object, const char* key, std::string_view value) {
    if (!value.empty()) {
        std::int64_t number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        object[key] = number;
    }
}

/// Numbers stand as they were read, with all their digits.
void appendPairs(std::string& text, std::string_view name, const RecordPairs* pairs) {
    if (pairs == nullptr || pairs->empty()) {
        return;
    }
    text.append(name);
    char separator = '{';
    for (const RecordPair& pair : *pairs) {
        text += std::exchange(separator, ',');
        text += asJson(pair.key) + ':' + (pair.isText ? asJson(pair.text) : pair.text);
    }
    text += '}';
}

} // namespace

void JsonPrinter::print(RecordStream& stream, std::string& text) {
    const bool belongsToARecord = stream.record().hasTime || stream.hasHeader();
    if (!belongsToARecord) {
        return;
    }
    const Fields& fields = stream.fields();
    Object object;
    object["time"] = stream.clock().isoText();
    addText(object, "logger", fields.logger);
    if (fields.isTypeKnown) {
        object["type"] = fields.hasLevel ? "LOG" : "CFG";
    }
    if (fields.hasLevel) {
        object["level"] = Log::Level::toString(fields.level);
    }
    addText(object, "file", fields.file);
    addNumber(object, "line", fields.line);
    addNumber(object, "thread", fields.thread);
    addNumber(object, "pid", fields.pid);
    addText(object, "program", fields.program);
    addText(object, "host", fields.host);
    object["text"] = fields.message;
    text += asJson(object);
    text.pop_back();
    appendPairs(text, ",\"values\":", fields.values);
    appendPairs(text, ",\"context\":", fields.context);
    text += ",\"source\":" + asJson(stream.source()) + "}\n";
}

} // namespace Tools
} // namespace ZAV
