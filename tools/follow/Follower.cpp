#include "follow/Follower.h"

#include "Complaint.h"
#include "platform/StopSignal.h"
#include "records/Merger.h"

namespace ZAV {
namespace Tools {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds IDLE(100);
constexpr milliseconds SETTLING(20);     ///< in which a write that has begun is expected to end, or to go on
constexpr milliseconds SAVE_PERIOD(200); ///< while many records come
constexpr std::size_t RECORDS_PER_LOOK = 256;

} // namespace

Follower::Follower(const RecordFilter& filter, Printer& printer, Output& output)
    : filter_(filter), printer_(printer), output_(output) {
    Platform::catchStopSignals(); // before the first input is opened, which may be a pipe
}

void Follower::showLast(std::size_t count) {
    last_.emplace(count);
    for (FollowedInput& input : inputs_) {
        input.beginNearEnd(filter_, count);
    }
}

void Follower::keepState(const std::string& path) {
    state_.emplace(path);
}

void Follower::run() {
    shower_.emplace(filter_, printer_, inputs_.size());
    resume();
    readRound();
    const bool mayGoOn = !Platform::isStopRequested() && !(isAnyPending() && Platform::waitForStop(SETTLING));
    if (mayGoOn) {
        readRound();
    }
    showLastRecords();
    saveProgress();
    bool isBusy = true;
    while (!Platform::waitForStop(isBusy ? SETTLING : IDLE)) {
        isBusy = readRound() || isAnyPending();
        saveProgress();
    }
}

/// With a state, nothing is left out: an input that it does not know is read from its start.
void Follower::resume() {
    if (!state_ || !state_->existed()) {
        return;
    }
    last_.reset();
    for (FollowedInput& input : inputs_) {
        input.beginAtStart();
        const std::optional<FilePlace> place = state_->find(input.path());
        if (place) {
            input.resumeAt(*place);
        }
    }
}

/// \return whether a record was shown; a request to end stops it between two records, and no round may follow
bool Follower::readRound() {
    std::vector<RecordStream*> streams;
    std::vector<std::string> notices;
    for (FollowedInput& input : inputs_) {
        input.poll(notices);
        streams.push_back(&input.stream());
    }
    reportNotices(notices);
    Merger merger(streams, RecordStream::Ending::GROWING);
    bool hasShown = false;
    for (int next = merger.next(); next >= 0; next = merger.next()) {
        hasShown = true;
        show(static_cast<std::size_t>(next));
        if (++sinceLastLook_ >= RECORDS_PER_LOOK) {
            sinceLastLook_ = 0;
            saveProgressIfDue();
            if (Platform::isStopRequested()) {
                return hasShown;
            }
        }
    }
    for (FollowedInput& input : inputs_) {
        input.settle();
    }
    reportNotices({});
    return hasShown;
}

void Follower::show(std::size_t input) {
    RecordStream& stream = inputs_[input].stream();
    const bool isContinuation = stream.record().isContinuation;
    const std::string& text = shower_->show(input, stream);
    if (!last_) {
        output_.write(text);
    } else if (isContinuation) {
        last_->extend(text);
    } else if (!text.empty()) {
        last_->add(text);
    }
    inputs_[input].commit();
}

void Follower::showLastRecords() {
    if (last_) {
        output_.write(last_->take());
        last_.reset();
    }
}

bool Follower::isAnyPending() const {
    for (const FollowedInput& input : inputs_) {
        if (input.stream().isPending()) {
            return true;
        }
    }
    return false;
}

/// Also says once if the filter has run into a problem.
void Follower::reportNotices(const std::vector<std::string>& notices) {
    for (const std::string& notice : notices) {
        complain(notice);
    }
    if (filter_.problem() != filterProblem_) {
        filterProblem_ = filter_.problem();
        complain(filterProblem_);
    }
}

/// In this order: what has not left the process is not done.
void Follower::saveProgress() {
    output_.flush();
    if (!state_) {
        return;
    }
    for (const FollowedInput& input : inputs_) {
        const std::optional<FilePlace> place = input.place();
        if (place) {
            state_->set(input.path(), *place);
        }
    }
    state_->save();
    savedAt_ = std::chrono::steady_clock::now();
}

void Follower::saveProgressIfDue() {
    if (!last_ && std::chrono::steady_clock::now() - savedAt_ > SAVE_PERIOD) {
        saveProgress();
    }
}

} // namespace Tools
} // namespace ZAV
