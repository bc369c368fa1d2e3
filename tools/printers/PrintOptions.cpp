#include "printers/PrintOptions.h"

#include "Outcome.h"
#include "options/RecordCount.h"
#include "platform/Clock.h"

namespace ZAV {
namespace Tools {

void PrintOptions::addTo(CLI::App& command) {
    jsonOption_ = command.add_flag("--json", json_, "Show each record as a JSON object on a line");
    command.add_flag("--source", source_, "Show the path of its file before each record");
    command.add_flag("--unique", unique_, "Of equal records from different inputs, show the first alone");
    contextOption_ =
        addRecordCount(command, "--context", context_, "Also show so many records before and after each");
    zoneOption_ = command.add_option("--zone", zone_,
                                     "The time zone that the files were written in, if it is not "
                                     "that of this process");
    zoneOption_->type_name("ZONE");
    color_.addTo(command);
}

void PrintOptions::addEndTo(CLI::App& command) {
    tailOption_ = addRecordCount(command, "--tail", tail_, "Only the last of the records that remain");
    command.add_flag("--count", count_, "Show how many records there are of each logger and level instead")
        ->excludes(jsonOption_)
        ->excludes(contextOption_)
        ->excludes(tailOption_);
}

void PrintOptions::useZone() const {
    if (zoneOption_->count() > 0 && !Platform::useZone(zone_)) {
        throw UsageError("the system knows no time zone '" + zone_ + "'");
    }
}

std::unique_ptr<Printer> PrintOptions::printer() const {
    if (count_) {
        return makeCountPrinter();
    }
    if (json_) {
        return makeJsonPrinter();
    }
    return makeLinePrinter(color_.isOn(), source_);
}

void PrintOptions::applyTo(RecordPresenter& presenter) const {
    presenter.showContext(context_);
    if (unique_) {
        presenter.leaveOutRepetitions();
    }
    if (tailOption_ != nullptr && tailOption_->count() > 0) {
        presenter.keepLast(tail_);
    }
}

} // namespace Tools
} // namespace ZAV
