#include "log/layout/LineLayout.h"

#include "log/LogLine.h"
#include "log/message/MessageFields.h"

#include <utility>

namespace ZAV {
namespace Log {

namespace {

std::shared_ptr<const LineLayout> makeUnescaped(LayoutName name, const std::vector<Column>& columns) {
    switch (name) {
    case LayoutName::PROCESS:
        return std::make_shared<ProcessLayout>();
    case LayoutName::JSON:
        return std::make_shared<JsonLayout>();
    case LayoutName::FIELDS:
        return std::make_shared<FieldsLayout>(columns);
    case LayoutName::PLAIN:
        break;
    }
    return std::make_shared<PlainLayout>();
}

} // namespace

std::shared_ptr<const LineLayout> makeLayout(LayoutName name, const std::vector<Column>& columns,
                                             bool isEscaped) {
    std::shared_ptr<const LineLayout> layout = makeUnescaped(name, columns);
    if (isEscaped && name != LayoutName::JSON) {
        return std::make_shared<EscapedLayout>(std::move(layout));
    }
    return layout;
}

std::string formatLogLine(const LogMessage& message) {
    std::string line;
    appendLogLine(line, message);
    return line;
}

std::string formatLogLineWithProcess(const LogMessage& message) {
    std::string line;
    appendLogLineWithProcess(line, message);
    return line;
}

} // namespace Log
} // namespace ZAV
