#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// Determines which process may rotate a series of files. Among a parent and its forked children, which would
/// otherwise rotate each other's files away, it is the first with an appender for the series, as long as it
/// lives and has one. The others only append to the live file, and follow when it has been moved.
///
/// The owner is recorded in shared memory, even for a series first used after the fork.
///
/// An object belongs to one appender, whose lock guards it.
class SeriesOwner {
public:
    /// \param livePath the path of the live file, which identifies the series
    explicit SeriesOwner(const std::string& livePath);
    ~SeriesOwner();
    SeriesOwner(const SeriesOwner&) = delete;
    SeriesOwner& operator=(const SeriesOwner&) = delete;

    /// Checks whether this process may rotate the series, taking ownership if the owner has ended or has no
    /// appender for it any more. Lock-free, but makes system calls.
    bool mayRotate();

    /// \return whether the live file contains lines of another of these processes, so that it must not be rotated at
    ///         the start. Makes no system call.
    bool isShared() const;

    /// Records that this process has moved the live file.
    void noteRotation();

    /// Records that the appender is about to check the live file's path, usually in a process that may not
    /// rotate.
    void follow();

    /// \return whether another process has moved the live file since `follow`. Makes no system call.
    bool isBehind() const;

    /// \return whether another process owns the series, or the live file has been moved by another object. Makes no
    ///         system call.
    bool mustRecheckFile() const;

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
