#include "follow/Follower.h"

#include "Outcome.h"
#include "platform/Terminal.h"
#include "records/Merger.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds IDLE(100);
constexpr milliseconds SETTLING(20);      ///< for a write in progress to complete or go on
constexpr milliseconds SAVE_PERIOD(200);  ///< while many records come
constexpr milliseconds RETRY_PERIOD(500); ///< for a state that cannot be written
constexpr std::size_t RECORDS_PER_LOOK = 256;

} // namespace

Follower::Follower(const RecordFilter& filter, Printer& printer, const std::vector<InputSpec>& inputs,
                   Output& output)
    : filter_(filter), presenter_(filter, printer, inputs.size()), output_(output),
      inputs_(inputs.begin(), inputs.end()) {
    Platform::catchStopSignals(); // before the first input is opened, which may be a pipe
}

void Follower::showLast(std::size_t count) {
    isBeginning_ = true;
    presenter_.keepLast(count);
    for (FollowedInput& input : inputs_) {
        input.beginNearEnd(filter_, count);
    }
}

void Follower::keepState(const std::string& path) {
    state_.emplace(path);
}

void Follower::run() {
    resume();
    readRound();
    const bool mayGoOn = !Platform::isStopRequested() && !(isAnyPending() && Platform::waitForStop(SETTLING));
    if (mayGoOn) {
        readRound();
    }
    endBeginning();
    saveProgress();
    bool isBusy = true;
    while (!haveAllEnded() && !Platform::waitForStop(isBusy ? SETTLING : IDLE)) {
        isBusy = readRound() || isAnyPending();
        saveProgressIfDue(milliseconds::zero());
        output_.flush();
    }
    saveProgress();
}

/// With a state, nothing is skipped: an input that it does not know is read from its start.
void Follower::resume() {
    if (!state_ || !state_->existed()) {
        return;
    }
    if (isBeginning_) {
        endBeginning();
    }
    for (FollowedInput& input : inputs_) {
        input.beginAtStart();
        const std::optional<FilePlace> place = state_->find(input.path());
        if (place) {
            input.resumeAt(*place);
        }
    }
}

/// \return whether a record was shown; a stop request ends the round between two records, and no other may follow
bool Follower::readRound() {
    std::vector<RecordStream*> streams;
    std::vector<std::string> notices;
    for (FollowedInput& input : inputs_) {
        if (!isBeginning_ || !input.isStandardInput()) {
            input.poll(notices);
        }
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
            saveProgressIfDue(SAVE_PERIOD);
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
    output_.write(presenter_.show(input, inputs_[input].stream()));
    inputs_[input].commit();
}

void Follower::endBeginning() {
    output_.write(presenter_.release());
    isBeginning_ = false;
}

bool Follower::haveAllEnded() const {
    return std::all_of(inputs_.begin(), inputs_.end(),
                       [](const FollowedInput& input) { return input.hasEnded(); });
}

bool Follower::isAnyPending() const {
    for (const FollowedInput& input : inputs_) {
        if (input.stream().isPending()) {
            return true;
        }
    }
    return false;
}

/// Also reports new problems of the filter and of the presenter.
void Follower::reportNotices(const std::vector<std::string>& notices) {
    for (const std::string& notice : notices) {
        reportError(notice);
    }
    if (filter_.problem() != filterProblem_) {
        filterProblem_ = filter_.problem();
        reportError(filterProblem_);
    }
    if (presenter_.problem() != presenterProblem_) {
        presenterProblem_ = presenter_.problem();
        reportError(presenterProblem_);
    }
}

/// In this order: a record that has not left the process must not be saved as done, and one that has should
/// be at once.
void Follower::saveProgress() {
    const auto begin = std::chrono::steady_clock::now();
    if (state_) {
        preparePlaces();
    }
    savePause_ = std::chrono::steady_clock::now() - begin;
    output_.flush();
    if (state_) {
        state_->save();
        reportState();
    }
    savedAt_ = std::chrono::steady_clock::now();
    savePause_ = stateProblem_.empty() ? savePause_ : RETRY_PERIOD;
}

/// Keeps the state as recent as possible, in case the follower is killed while its files are rotated, but
/// spends no more than half of the time waiting for the disk.
void Follower::saveProgressIfDue(milliseconds period) {
    if (!isBeginning_ && std::chrono::steady_clock::now() - savedAt_ >= savePause_ + period) {
        saveProgress();
    }
}

void Follower::preparePlaces() {
    for (FollowedInput& input : inputs_) {
        const std::optional<FilePlace> place = input.place();
        if (place) {
            state_->set(input.path(), *place);
        }
    }
    state_->prepare();
}

/// Failing to save the state does not stop the output: it is saved later, or the records come again.
void Follower::reportState() {
    if (!state_->problem().empty() && state_->problem() != stateProblem_) {
        reportError(state_->problem());
    }
    stateProblem_ = state_->problem();
}

} // namespace Tools
} // namespace ZAV
