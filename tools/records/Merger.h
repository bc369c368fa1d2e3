#pragma once

#include "records/RecordStream.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZAV {
namespace Tools {

/// Merges streams in the order of time. Records of the same time come in the order of their streams. Within a
/// stream the order is kept, even where its time goes back: a record then comes as early as the next one, and
/// delays nothing.
class Merger {
public:
    /// \param streams must outlive the merger
    Merger(std::vector<RecordStream*> streams, RecordStream::Ending ending);

    /// \return the index of the stream whose record comes next, until the next call; -1 if no stream has one
    int next();

private:
    void advance(std::size_t index);
    bool comesLater(std::size_t a, std::size_t b) const;

    std::vector<RecordStream*> streams_;
    std::vector<std::int64_t> places_; ///< at which their records are merged
    RecordStream::Ending ending_;
    std::vector<std::size_t> heap_; ///< indices of the streams that have a record, the earliest first
    int given_ = -1;
};

} // namespace Tools
} // namespace ZAV
