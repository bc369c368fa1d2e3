#include "filters/RecordFilter.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

bool isAtOrBelow(std::string_view logger, const std::string& ancestor) {
    const bool begins = logger.substr(0, ancestor.size()) == ancestor;
    return begins && (logger.size() == ancestor.size() || logger[ancestor.size()] == '.');
}

bool has(const RecordPairs* pairs, const std::pair<std::string, std::string>& wanted) {
    return pairs != nullptr && std::any_of(pairs->begin(), pairs->end(), [&wanted](const RecordPair& pair) {
               return pair.key == wanted.first && pair.text == wanted.second;
           });
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
    if ((type_ || level_) && !(record.hasTime && meetsLevelAndType(stream.fields()))) {
        return false;
    }
    if (!loggers_.empty() && !acceptsLogger(stream.fields().logger)) {
        return false;
    }
    if (!pairs_.empty() && !hasAllPairs(stream.fields())) {
        return false;
    }
    return !pattern_ || pattern_->matches(stream.fields().text);
}

/// A record of unknown type meets neither requirement. A configuration message has the most severe level.
bool RecordFilter::meetsLevelAndType(const Fields& fields) const {
    return fields.isTypeKnown && !(type_ && fields.hasLevel != (*type_ == Log::LOG)) &&
           !(level_ && fields.hasLevel && fields.level < *level_);
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

bool RecordFilter::hasAllPairs(const Fields& fields) const {
    return std::all_of(pairs_.begin(), pairs_.end(), [&fields](const auto& pair) {
        return has(fields.values, pair) || has(fields.context, pair);
    });
}

} // namespace Tools
} // namespace ZAV
