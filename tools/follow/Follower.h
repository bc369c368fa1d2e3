#pragma once

#include "Output.h"
#include "filters/RecordFilter.h"
#include "follow/FollowedInput.h"
#include "follow/LastRecords.h"
#include "follow/StateFile.h"
#include "inputs/InputSpec.h"
#include "printers/RecordShower.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// Shows what inputs hold and goes on as they grow, until the process is asked to end.
class Follower {
public:
    /// The references must outlive the follower.
    Follower(const RecordFilter& filter, Printer& printer, Output& output);

    void addInput(const InputSpec& spec) { inputs_.emplace_back(spec); }

    /// Shows no more than the last few records of what is there at the start; called behind `addInput`.
    void showLast(std::size_t count);

    /// Keeps the places in a file, and goes on at those that it has.
    /// \throw Failure if the file exists and cannot be read
    void keepState(const std::string& path);

    /// \throw OutputClosed, Failure
    void run();

private:
    void resume();
    bool readRound();
    void show(std::size_t input);
    void showLastRecords();
    bool isAnyPending() const;
    void reportNotices(const std::vector<std::string>& notices);
    void saveProgress();
    void saveProgressIfDue();

    const RecordFilter& filter_;
    Printer& printer_;
    std::optional<RecordShower> shower_; ///< while it runs
    Output& output_;
    std::deque<FollowedInput> inputs_;
    std::optional<LastRecords> last_;
    std::optional<StateFile> state_;
    std::string filterProblem_;     ///< what was reported of the filter last
    std::size_t sinceLastLook_ = 0; ///< records since the clock and the signals were looked at
    std::chrono::steady_clock::time_point savedAt_;
};

} // namespace Tools
} // namespace ZAV
