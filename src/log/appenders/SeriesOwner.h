#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// Says which process may rotate a series of files. Of a parent and all that were forked from it, which would
/// tear the files away from each other, it is the first one that has an appender for the series, as long as
/// it lives and has one. The others only append to the live file, and follow when that has been moved.
///
/// Which process that is stands in memory that all of them have in common, also for a series that some come
/// to only after the fork.
///
/// An object belongs to one appender, whose lock guards it.
class SeriesOwner {
public:
    /// \param livePath the path of the live file, which stands for the series
    explicit SeriesOwner(const std::string& livePath);
    ~SeriesOwner();
    SeriesOwner(const SeriesOwner&) = delete;
    SeriesOwner& operator=(const SeriesOwner&) = delete;

    /// Asks whether this process may rotate the series, and takes the series over if the process that rotated
    /// it has ended or has no appender for it any more. Takes no lock, but asks the system.
    bool mayRotate();

    /// \return whether the live file holds what another of these processes has written, so that it may not be
    ///         rotated away at the beginning. Costs no call of the system.
    bool isShared() const;

    /// Notes that this process has moved the live file.
    void noteRotation();

    /// Notes that the appender is about to look where the live file is, as a rule in a process that may not
    /// rotate.
    void follow();

    /// \return whether another process has moved the live file since `follow`. Costs no call of the system.
    bool isBehind() const;

    /// \return whether another process rotates the series, or the live file has been moved for another object.
    ///         Costs no call of the system.
    bool isNotAlone() const;

private:
    struct Common;
    struct Series;
    struct Table;
    static const Table& madeAtLoad;

    Series& series_;
    unsigned rotationsSeen_ = 0;
};

} // namespace Log
} // namespace ZAV
