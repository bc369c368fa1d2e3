#pragma once

#include "Output.h"
#include "filters/RecordFilter.h"
#include "follow/FollowedInput.h"
#include "follow/StateFile.h"
#include "inputs/LogFiles.h"
#include "printers/RecordPresenter.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Shows the records of inputs, and new ones as the inputs grow, until the process is asked to end.
class Follower {
public:
    /// The references must outlive the follower.
    Follower(const RecordFilter& filter, Printer& printer, const std::vector<InputSpec>& inputs,
             Output& output);

    /// \return the presenter, which may be told to show more or less before `run`
    RecordPresenter& presenter() { return presenter_; }

    /// Shows only the last `count` records of what is there at the start; of standard input, all.
    void showLast(std::size_t count);

    /// Saves the places in a file, and resumes at those that it holds.
    /// \throw Failure if the file exists and cannot be read, or if another follower saves its places there
    void keepState(const std::string& path);

    /// Returns when the process is asked to end, or when all inputs are pipes that have ended.
    /// \throw OutputClosed, Failure
    void run();

private:
    void resume();
    bool readRound();
    void show(std::size_t input);
    void endBeginning();
    bool haveAllEnded() const;
    bool isAnyPending() const;
    void reportNotices(const std::vector<std::string>& notices);
    void saveProgress();
    void saveProgressIfDue(std::chrono::milliseconds period);
    void preparePlaces();
    void reportState();

    const RecordFilter& filter_;
    RecordPresenter presenter_;
    Output& output_;
    std::deque<FollowedInput> inputs_;
    bool isBeginning_ = false; ///< still looking for the last of the existing records
    std::optional<StateFile> state_;
    std::string stateProblem_;      ///< why the state could not be written when that was last tried
    std::string filterProblem_;     ///< what was reported of the filter last
    std::string presenterProblem_;  ///< what was reported of the records last
    std::size_t sinceLastLook_ = 0; ///< records since the clock and the signals were checked
    std::chrono::steady_clock::time_point savedAt_;
    std::chrono::steady_clock::duration savePause_ = {}; ///< the least time from then to the next save
};

} // namespace Tools
} // namespace ZAV
