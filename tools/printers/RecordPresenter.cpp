#include "printers/RecordPresenter.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

/// Of the records that are kept to recognise others by.
constexpr std::size_t LARGEST_SIZE = 16 * 1024 * 1024;
constexpr std::size_t OVERHEAD = 160; ///< per entry, approximately

/// Bytes of the records that are held or kept, beyond which their later parts are dropped: a few without an
/// end must not fill the memory.
constexpr std::size_t MAX_KEPT = 16 * 1024 * 1024;

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
        text += '\0';
    }
    return text;
}

std::string processOf(const Fields& fields) {
    return fields.pid.empty() ? "" : joined({fields.program, fields.pid, fields.host});
}

std::string recordOf(const Record& record, const Fields& fields) {
    const std::string level = fields.hasLevel ? Log::Level::toString(fields.level) : "";
    return joined({record.time(), fields.logger, level, fields.file, fields.line, fields.text});
}

} // namespace

bool Repetitions::isRepeated(std::size_t input, RecordStream& stream) {
    const Fields& fields = stream.fields();
    std::string record = recordOf(stream.record(), fields);
    Seen seen = {input, processOf(fields)};
    const auto [begin, end] = seen_.equal_range(record);
    for (auto entry = begin; entry != end; ++entry) {
        const Seen& other = entry->second;
        const bool isSameProcess =
            other.process == seen.process || other.process.empty() || seen.process.empty();
        if (isSameProcess) {
            return other.input != input;
        }
    }
    keep(std::move(record), std::move(seen));
    return false;
}

void Repetitions::keep(std::string record, Seen seen) {
    size_ += record.size() + seen.process.size() + OVERHEAD;
    order_.push_back(seen_.emplace(std::move(record), std::move(seen)));
    while (size_ > LARGEST_SIZE) {
        const Table::const_iterator oldest = order_.front();
        order_.pop_front();
        size_ -= oldest->first.size() + oldest->second.process.size() + OVERHEAD;
        seen_.erase(oldest);
    }
}

const std::string& RecordPresenter::show(std::size_t input, RecordStream& stream) {
    text_.clear();
    Fate& fate = fates_[input];
    if (stream.record().isContinuation) {
        if (fate.kind != Fate::LEFT_OUT) {
            printer_.print(stream, placeOf(fate));
        }
        return text_;
    }
    const bool isWanted = judge(input, stream);
    if (fate.kind == Fate::SHOWN) {
        printer_.print(stream, placeFor(number_, isWanted));
    } else if (fate.kind == Fate::HELD) {
        printer_.print(stream, hold());
    }
    return text_;
}

/// \return whether the record is wanted; its fate says whether it is shown
bool RecordPresenter::judge(std::size_t input, RecordStream& stream) {
    Fate& fate = fates_[input];
    fate = Fate();
    if (repetitions_ && repetitions_->isRepeated(input, stream)) {
        return false;
    }
    fate.number = ++number_;
    const bool isWanted = filter_.accepts(stream);
    if (isWanted) {
        showHeld();
        following_ = context_;
        fate.kind = Fate::SHOWN;
    } else if (following_ > 0) {
        --following_;
        fate.kind = Fate::SHOWN;
    } else if (context_ > 0) {
        fate.kind = Fate::HELD;
    }
    return isWanted;
}

std::string& RecordPresenter::hold() {
    held_.push_back({number_, false, std::string()});
    if (held_.size() > context_) {
        held_.pop_front();
    }
    return held_.back().text;
}

void RecordPresenter::showHeld() {
    for (; !held_.empty(); held_.pop_front()) {
        placeFor(held_.front().number, false) += held_.front().text;
    }
}

/// \return where to append the text of a record that is to be shown
std::string& RecordPresenter::placeFor(std::uint64_t number, bool isWanted) {
    if (limit_) {
        dropBeyondLimit();
        kept_.push_back({number, isWanted, std::string()});
        keptWanted_ += isWanted ? 1 : 0;
        return kept_.back().text;
    }
    addGap(number);
    return text_;
}

/// \return where to append the text that continues a record
std::string& RecordPresenter::placeOf(const Fate& fate) {
    for (std::deque<Entry>* const entries : {&held_, &kept_}) {
        const auto found = std::find_if(entries->rbegin(), entries->rend(),
                                        [&fate](const Entry& entry) { return entry.number == fate.number; });
        if (found != entries->rend() && !isFull()) {
            return found->text;
        }
        if (found != entries->rend()) {
            problem_ =
                "very long records are shown in part: no more than 16 MiB are kept until they can be shown";
            nowhere_.clear();
            return nowhere_;
        }
    }
    const bool isDropped = limit_ || fate.kind == Fate::HELD;
    nowhere_.clear();
    return isDropped ? nowhere_ : text_;
}

bool RecordPresenter::isFull() const {
    std::size_t size = 0;
    for (const std::deque<Entry>* const entries : {&held_, &kept_}) {
        for (const Entry& entry : *entries) {
            size += entry.text.size();
        }
    }
    return size >= MAX_KEPT;
}

/// A surplus wanted record is kept only as long as it is context of the next one.
void RecordPresenter::dropBeyondLimit() {
    const auto isWanted = [](const Entry& entry) { return entry.isWanted; };
    while (keptWanted_ > *limit_) {
        std::find_if(kept_.begin(), kept_.end(), isWanted)->isWanted = false;
        --keptWanted_;
        const auto next = std::find_if(kept_.begin(), kept_.end(), isWanted);
        if (next == kept_.end()) {
            kept_.clear();
        }
        while (!kept_.empty() && kept_.front().number + context_ < next->number) {
            kept_.pop_front();
        }
    }
}

/// Separates records that do not directly follow one another.
void RecordPresenter::addGap(std::uint64_t number) {
    if (context_ > 0 && lastShown_ != 0 && number > lastShown_ + 1) {
        printer_.printGap(text_);
    }
    lastShown_ = number;
}

const std::string& RecordPresenter::release() {
    text_.clear();
    if (limit_) {
        dropBeyondLimit();
        limit_.reset();
    }
    if (keptWanted_ == 0) {
        kept_.clear();
    }
    for (; !kept_.empty(); kept_.pop_front()) {
        addGap(kept_.front().number);
        text_ += kept_.front().text;
    }
    return text_;
}

const std::string& RecordPresenter::end() {
    text_.clear();
    printer_.printEnd(text_);
    return text_;
}

} // namespace Tools
} // namespace ZAV
