#include "records/StructuredLines.h"

#include "records/FieldsLine.h"
#include "records/JsonLine.h"

namespace ZAV {
namespace Tools {

StructuredLines::StructuredLines(LineForm form)
    : form_(std::move(form)),
      mayBeJson_(form_.hasJson && (form_.columns.empty() || beginWithWord(form_.columns))) {}

std::shared_ptr<StructuredRecord> StructuredLines::read(std::string_view line, std::uint64_t offset) {
    return find(line, offset).record;
}

std::shared_ptr<StructuredRecord> StructuredLines::take(std::string_view line, std::uint64_t offset) {
    Known& known = find(line, offset);
    known.size = 0;
    return std::move(known.record);
}

StructuredLines::Known& StructuredLines::find(std::string_view line, std::uint64_t offset) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    for (Known& known : known_) {
        if (known.size == line.size() && known.offset == offset && known.size != 0) {
            return known;
        }
    }
    Known& known = known_[next_];
    next_ = 1 - next_;
    known.offset = offset;
    known.size = line.size();
    known.record.reset();
    if (mayBeJson_ && line.size() <= LONGEST) {
        known.record = readJsonLine(line);
    }
    if (known.record == nullptr && !form_.columns.empty() && line.size() <= LONGEST) {
        known.record = readFieldsLine(line, form_.columns);
    }
    return known;
}

} // namespace Tools
} // namespace ZAV
