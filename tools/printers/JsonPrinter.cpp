#include "printers/Printer.h"

#include "log/text/JsonText.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

class JsonPrinter : public Printer {
public:
    void print(RecordStream& stream, std::string& text) override;
};

/// \param member with the separator before it and the colon after it
void addText(std::string& object, std::string_view member, std::string_view value) {
    if (!value.empty()) {
        Log::appendJsonText(object.append(member), value);
    }
}

/// \param digits as in the record, any number of them
void addNumber(std::string& object, std::string_view member, std::string_view digits) {
    if (!digits.empty()) {
        const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size() - 1);
        object.append(member).append(digits.substr(zeros));
    }
}

/// Numbers are written as they were read, with all their digits.
void addPairs(std::string& object, std::string_view member, const RecordPairs* pairs) {
    if (pairs == nullptr || pairs->empty()) {
        return;
    }
    object.append(member);
    char separator = '{';
    for (const RecordPair& pair : *pairs) {
        object += std::exchange(separator, ',');
        Log::appendJsonText(object, pair.key);
        object += ':';
        if (pair.isText) {
            Log::appendJsonText(object, pair.text);
        } else {
            object.append(pair.text);
        }
    }
    object += '}';
}

void JsonPrinter::print(RecordStream& stream, std::string& text) {
    const bool belongsToARecord = stream.record().hasTime || stream.hasHeader();
    if (!belongsToARecord) {
        return;
    }
    const Fields& fields = stream.fields();
    addText(text, "{\"time\":", stream.clock().isoText());
    addText(text, ",\"logger\":", fields.logger);
    if (fields.isTypeKnown) {
        text += fields.hasLevel ? ",\"type\":\"LOG\"" : ",\"type\":\"CFG\"";
    }
    if (fields.hasLevel) {
        addText(text, ",\"level\":", Log::Level::toString(fields.level));
    }
    addText(text, ",\"file\":", fields.file);
    addNumber(text, ",\"line\":", fields.line);
    addNumber(text, ",\"thread\":", fields.thread);
    addNumber(text, ",\"pid\":", fields.pid);
    addText(text, ",\"program\":", fields.program);
    addText(text, ",\"host\":", fields.host);
    Log::appendJsonText(text += ",\"text\":", fields.message);
    addPairs(text, ",\"values\":", fields.values);
    addPairs(text, ",\"context\":", fields.context);
    Log::appendJsonText(text += ",\"source\":", stream.source());
    text += "}\n";
}

} // namespace

std::unique_ptr<Printer> makeJsonPrinter() {
    return std::make_unique<JsonPrinter>();
}

} // namespace Tools
} // namespace ZAV
