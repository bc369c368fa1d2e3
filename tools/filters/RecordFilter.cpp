#include "filters/RecordFilter.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

bool isAtOrBelow(std::string_view logger, const std::string& ancestor) {
    const bool begins = logger.substr(0, ancestor.size()) == ancestor;
    return begins && (logger.size() == ancestor.size() || logger[ancestor.size()] == '.');
}

} // namespace

bool RecordFilter::accepts(RecordStream& stream) const {
    const bool meets = meetsAll(stream);
    return isInverted_ ? !meets || (pattern_ && pattern_->wasUndecided()) : meets;
}

bool RecordFilter::meetsAll(RecordStream& stream) const {
    const Record& record = stream.record();
    if (!meetsTime(stream)) {
        return false;
    }
    if (type_ && (!record.hasTime || stream.fields().hasLevel != (*type_ == Log::LOG))) {
        return false;
    }
    if (level_ && (!record.hasTime || (stream.fields().hasLevel && stream.fields().level < *level_))) {
        return false;
    }
    if (!loggers_.empty() && !acceptsLogger(stream.fields().logger)) {
        return false;
    }
    return !pattern_ || pattern_->matches(stream.fields().text);
}

std::string RecordFilter::problem() const {
    const bool isExact = !pattern_ || pattern_->problem().empty();
    return isExact ? "" : "--grep: " + pattern_->problem() + "; records that may not match are shown too";
}

bool RecordFilter::meetsTime(const RecordStream& stream) const {
    if (!since_ && !until_) {
        return true;
    }
    return stream.record().hasTime && !(since_ && since_->isAfter(stream.clock())) &&
           !(until_ && until_->isBefore(stream.clock()));
}

bool RecordFilter::acceptsLogger(std::string_view logger) const {
    return std::any_of(loggers_.begin(), loggers_.end(), [logger](const std::string& allowed) {
        return allowed == "root" || isAtOrBelow(logger, allowed);
    });
}

} // namespace Tools
} // namespace ZAV
