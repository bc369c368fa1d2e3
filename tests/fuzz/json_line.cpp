// Whatever a message holds, its line of JSON is one line that a strict parser reads: valid UTF-8, and no key
// twice in an object. The command zav-log reads it back, and shows the same members.

#include "Expect.h"

#include "log/AppenderOptions.h"
#include "log/LogCapture.h"
#include "log/LogContext.h"
#include "log/LogValues.h"
#include "records/JsonLine.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

using namespace ZAV;
using namespace ZAV::Log;
using nlohmann::json;

namespace {

template <typename Number>
Number numberOf(FuzzedDataProvider& input) {
    Number number = 0;
    const std::vector<char> bytes = input.ConsumeBytes<char>(sizeof number);
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(&number));
    return number;
}

/// Calls a function with a value of any type.
template <typename Function>
void withValue(FuzzedDataProvider& input, const Function& function) {
    switch (input.ConsumeIntegralInRange(0, 6)) {
    case 0:
        return function(numberOf<double>(input));
    case 1:
        return function(numberOf<float>(input));
    case 2:
        return function(static_cast<long double>(numberOf<double>(input)) *
                        (1.0L + numberOf<double>(input) * 1e-300L));
    case 3:
        return function(input.ConsumeIntegral<long long>());
    case 4:
        return function(input.ConsumeIntegral<char>());
    case 5:
        return function(input.ConsumeBool());
    default:
        return function(input.ConsumeRandomLengthString(12));
    }
}

/// A few keys, so that some come twice.
std::string keyOf(FuzzedDataProvider& input) {
    return input.ConsumeBool() ? input.PickValueInArray({"a", "b", "", "\x80"})
                               : input.ConsumeRandomLengthString(4);
}

void log(Logger& logger, FuzzedDataProvider& input) {
    const std::string text = input.ConsumeRandomLengthString();
    const std::string keys[] = {keyOf(input), keyOf(input), keyOf(input), keyOf(input)};
    withValue(input, [&](const auto& first) {
        withValue(input, [&](const auto& second) {
            const LogContext outer(keys[0], first);
            const LogContext inner(keys[1], second);
            if (input.ConsumeBool()) {
                ZAV_LOGV_INFO(logger, text, keys[2], first, keys[3], second, keys[0], text);
            } else {
                logger.error(text, input.ConsumeIntegralInRange(-1, 2), input.ConsumeRandomLengthString(8));
            }
        });
    });
}

json parse(const std::string& line) {
    std::vector<std::set<std::string>> keys;
    return json::parse(line, [&keys](int, json::parse_event_t event, json& parsed) {
        if (event == json::parse_event_t::object_start) {
            keys.emplace_back();
        } else if (event == json::parse_event_t::object_end) {
            keys.pop_back();
        } else if (event == json::parse_event_t::key) {
            EXPECT(keys.back().insert(parsed.get<std::string>()).second);
        }
        return true;
    });
}

void expectPairs(const json& line, const char* name, const Tools::RecordPairs* pairs) {
    EXPECT(line.contains(name) ? line[name].size() == pairs->size() : pairs->empty());
    for (const Tools::RecordPair& pair : *pairs) {
        EXPECT(line[name][pair.key] == (pair.isText ? json(pair.text) : json::parse(pair.text)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const AppenderOptions options("A", Util::Properties{{"appender.A.layout", "json"}});
    FuzzedDataProvider input(data, size);
    Logger& logger = LoggerFactory::getLogger("net.tcp");
    const LogCapture capture(logger, Level::TRACE, false);
    log(logger, input);
    const LogMessage message = capture.messages().at(0);
    const std::string line = options.formatLine(message);
    EXPECT(std::none_of(line.begin(), line.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }));
    const json parsed = parse(line);
    const auto record = Tools::readJsonLine(line);
    EXPECT(record != nullptr);
    const Tools::Fields fields = record->fields();
    EXPECT(parsed["text"] == fields.message);
    EXPECT(parsed["thread"] == message.getThread());
    EXPECT(parsed["level"] == Level::toString(fields.level));
    EXPECT(parsed.value("file", "") == fields.file);
    expectPairs(parsed, "values", fields.values);
    expectPairs(parsed, "context", fields.context);
    return 0;
}
