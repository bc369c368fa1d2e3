#include "records/Layout.h"

#include "inputs/LogContent.h"
#include "records/Record.h"
#include "records/RecordReader.h"
#include "records/TextLines.h"
#include "records/TimeStamp.h"

#include <algorithm>
#include <string_view>

namespace ZAV {
namespace Tools {

namespace {

Layout scan(const LogContent& file) {
    RecordReader reader(file);
    Record record;
    while (reader.next(record) || reader.takeRest(record, true)) {
        const Layout layout = record.hasTime ? layoutOf(record.lines) : Layout::UNKNOWN;
        if (layout != Layout::UNKNOWN) {
            return layout;
        }
    }
    return Layout::UNKNOWN;
}

Layout scanLines(std::string_view lines) {
    while (!lines.empty()) {
        const Layout layout = startsWithTime(lines) ? layoutOf(lines) : Layout::UNKNOWN;
        if (layout != Layout::UNKNOWN) {
            return layout;
        }
        lines.remove_prefix(std::min(lines.find('\n'), lines.size() - 1) + 1);
    }
    return Layout::UNKNOWN;
}

} // namespace

LayoutDetector::LayoutDetector(const LogContent& file, Layout given) : file_(file), layout_(given) {}

Layout LayoutDetector::layoutFor(const Record& record, const RecordReader& reader) {
    if (layout_ == Layout::UNKNOWN && !hasScanned_ && file_.isSeekable()) {
        layout_ = scan(file_);
        hasScanned_ = true;
    }
    if (layout_ == Layout::UNKNOWN && record.hasTime) {
        layout_ = layoutOf(record.lines); // of a line that was written after the scan
    }
    if (layout_ == Layout::UNKNOWN && !file_.isSeekable() && reader.bytesSeen() != scannedTo_) {
        layout_ = scanLines(reader.ahead());
        scannedTo_ = reader.bytesSeen();
    }
    return layout_;
}

} // namespace Tools
} // namespace ZAV
