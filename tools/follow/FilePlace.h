#pragma once

#include "inputs/LogContent.h"
#include "platform/OpenFiles.h"

#include <cstdint>

namespace ZAV {
namespace Tools {

/// A place in a file that can be found again after the file was renamed, and by a later process.
///
/// The system's identity of a file is not enough: it is reused once the file is deleted, and may change when
/// a machine or a container restarts. So the place also keeps a hash of samples of the content before it.
class FilePlace {
public:
    FilePlace() = default;
    FilePlace(const Platform::FileIdentity& identity, std::uint64_t offset, std::uint64_t mark)
        : identity_(identity), offset_(offset), mark_(mark) {}

    /// \return the place at an offset of a file as it is now
    static FilePlace in(const LogContent& file, std::uint64_t offset);

    /// \return true if the file still has the same content before the place
    bool isIn(const LogContent& file) const;

    const Platform::FileIdentity& identity() const { return identity_; }
    std::uint64_t offset() const { return offset_; }
    std::uint64_t mark() const { return mark_; }

private:
    Platform::FileIdentity identity_;
    std::uint64_t offset_ = 0;
    std::uint64_t mark_ = 0;
};

} // namespace Tools
} // namespace ZAV
