#include "log/layout/LineLayout.h"

#include "log/layout/EscapedLayout.h"
#include "log/layout/FieldsLayout.h"
#include "log/layout/JsonLayout.h"
#include "log/layout/PlainLayout.h"

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

} // namespace Log
} // namespace ZAV
