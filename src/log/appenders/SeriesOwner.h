#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// Says whether this process may rotate a series of files. A forked child that carried on where its parent
/// rotates would tear the parent's files away, so it may not while the parent lives, also with an appender
/// that it makes itself for the same files.
///
/// Which process rotates which series is remembered for the whole process, and forked with it.
class SeriesOwner {
public:
    /// \param livePath the path of the live file, which stands for the series
    explicit SeriesOwner(const std::string& livePath);
    ~SeriesOwner();
    SeriesOwner(const SeriesOwner&) = delete;
    SeriesOwner& operator=(const SeriesOwner&) = delete;

    /// Asks whether this process may rotate the series. It takes the series over if the process that rotated
    /// it has ended.
    bool mayRotate();

private:
    std::string livePath_;
    int processId_; ///< of the process that rotates
};

} // namespace Log
} // namespace ZAV
