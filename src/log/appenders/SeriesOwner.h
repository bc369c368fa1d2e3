#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// Says which process may rotate a series of files. A forked child that rotated would tear the files away
/// from its parent, so it may not while the parent lives and has an appender for it, also with one that it
/// makes itself for the same files. It only appends to the live file, and follows when the parent has moved
/// that.
///
/// Which process rotates which series is remembered for the whole process, and forked with it. What changes
/// of it afterwards is in memory that these processes have in common.
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
    /// it has ended or has no appender for it any more. Takes no lock.
    bool mayRotate();

    /// \return whether the live file holds what another of these processes has written before this one began,
    ///         so that it may not be rotated away at the beginning
    bool isShared() const;

    /// Notes that this process has moved the live file.
    void noteRotation();

    /// Notes that this process, which may not rotate, is about to look where the live file is.
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
    static Table& table();
    static const Table& madeAtLoad;

    Series& series_;
    unsigned rotationsSeen_ = 0;
};

} // namespace Log
} // namespace ZAV
