#include "filters/FilterOptions.h"

#include "Outcome.h"
#include "options/LevelName.h"
#include "zav-util/TimeUtils.h"

#include <cstddef>

namespace ZAV {
namespace Tools {

void FilterOptions::addTo(CLI::App& command) {
    levelOption_ =
        command.add_option("--level", level_, "Only this level and more severe ones")->type_name("LEVEL");
    command.add_option("--logger", loggers_, "Only this logger and all below it; may be repeated")
        ->allow_extra_args(false)
        ->type_name("NAME");
    command
        .add_option("--value", values_,
                    "Only with this pair among the values or in the context, which lines of the layout json "
                    "have; may be repeated, for records that have all of them")
        ->allow_extra_args(false)
        ->type_name("KEY=TEXT");
    command.add_option("--type", type_, "Only log messages, or only configuration messages")
        ->check(CLI::IsMember({"LOG", "CFG"}))
        ->type_name("LOG|CFG");
    sinceOption_ = command.add_option("--since", since_,
                                      "Only from this time on: \"2013.05.07 14:03:27\", a beginning of it, "
                                      "what a record shows (also in ISO 8601), 14:03 of today, or an age "
                                      "(30sec, 10min, 2h, 1d)");
    sinceOption_->type_name("TIME");
    untilOption_ =
        command.add_option("--until", until_, "Only up to this time, inclusive")->type_name("TIME");
    patternOption_ =
        command.add_option("--grep", pattern_, "Only where a regular expression matches in the text")
            ->type_name("REGEX");
    command.add_flag("--invert", invert_, "Only the records that the other filters leave out");
}

RecordFilter FilterOptions::filter() const {
    RecordFilter filter;
    const auto now = static_cast<std::int64_t>(Util::TimeUtils::Time::now().microseconds());
    if (levelOption_->count() > 0) {
        filter.requireLevel(readLevel(level_));
    }
    for (const std::string& logger : loggers_) {
        filter.allowLogger(logger);
    }
    for (const std::string& value : values_) {
        const std::size_t sign = value.find('=');
        if (sign == std::string::npos) {
            throw UsageError("--value: '" + value + "' is no pair: write KEY=TEXT");
        }
        filter.requirePair(value.substr(0, sign), value.substr(sign + 1));
    }
    if (!type_.empty()) {
        filter.requireType(type_ == "LOG" ? Log::LOG : Log::CFG);
    }
    if (sinceOption_->count() > 0) {
        filter.requireSince(TimeBound(since_, now));
    }
    if (untilOption_->count() > 0) {
        filter.requireUntil(TimeBound(until_, now));
    }
    if (patternOption_->count() > 0) {
        filter.requirePattern(pattern_);
    }
    if (invert_) {
        filter.invert();
    }
    return filter;
}

} // namespace Tools
} // namespace ZAV
