#pragma once

#include <string>

namespace ZAV {
namespace Log {

/// Says whether this process may rotate a series of files. A forked child that rotated would tear the files
/// away from its parent, so it may not while the parent lives, also with an appender that it makes itself for
/// the same files.
///
/// Which process rotates which series is remembered for the whole process, and forked with it.
class SeriesOwner {
public:
    /// \param livePath the path of the live file, which stands for the series
    explicit SeriesOwner(const std::string& livePath);
    ~SeriesOwner();
    SeriesOwner(const SeriesOwner&) = delete;
    SeriesOwner& operator=(const SeriesOwner&) = delete;

    /// Asks whether this process may rotate the series, and takes the series over if the process that rotated
    /// it has ended. Takes no lock.
    bool mayRotate();

private:
    struct Series;
    struct Table;
    static Table& table();
    static const Table& madeAtLoad;

    Series& series_;
};

} // namespace Log
} // namespace ZAV
