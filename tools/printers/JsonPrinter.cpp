#include "printers/JsonPrinter.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>

namespace ZAV {
namespace Tools {

namespace {

using Object = nlohmann::ordered_json;

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
    object["type"] = fields.hasLevel ? "LOG" : "CFG";
    if (fields.hasLevel) {
        object["level"] = Log::Level::toString(fields.level);
    }
    addText(object, "file", fields.file);
    addNumber(object, "line", fields.line);
    addNumber(object, "pid", fields.pid);
    addText(object, "program", fields.program);
    addText(object, "host", fields.host);
    object["text"] = fields.text;
    object["source"] = stream.source();
    text += object.dump(-1, ' ', false, Object::error_handler_t::replace);
    text += '\n';
}

} // namespace Tools
} // namespace ZAV
