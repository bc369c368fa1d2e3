#pragma once

#include "log/config/AppenderValues.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// A rolled file: its name behind the live file's is ".<stamp>", or ".<stamp>-<number>" from the second one
/// of that stamp on, and ".gz" if it is packed.
struct RolledFile {
    std::string stamp; ///< YYYYMMDDTHHMMSSZ: when it was rolled, in UTC
    std::uint64_t number = 0;
    bool isPlain = false;
    bool isPacked = false; ///< also while the plain file is still there, which then counts alone

    /// \return what the name ends in, without ".gz"
    std::string suffix() const;
};

/// The files that were rolled away from a live file. They are named once, so their names give their order.
///
/// What is being packed has a name that is none of a rolled file, see `PART`. The object belongs to one
/// appender, whose lock guards it.
class RolledFiles {
public:
    static constexpr char PACKED[] = ".gz";
    static constexpr char PART[] = ".gz.part"; ///< the end of the name of a packed file that is not whole yet

    /// \param livePath the path of the live file
    explicit RolledFiles(const std::string& livePath);

    /// Finds the rolled files.
    /// \param files receives them, the oldest first
    /// \param parts receives the paths, without ".gz", of those that are half packed
    /// \return false if the folder cannot be listed
    bool list(std::vector<RolledFile>& files, std::vector<std::string>& parts) const;

    /// \return the path of a file, without ".gz"
    std::string pathOf(const RolledFile& file) const { return livePath_ + file.suffix(); }

    /// Gives the live file, which nobody of this process has open, the name of the newest of the rolled ones.
    /// It is an earlier one than those of all that follow, also if the clock is set back meanwhile; what
    /// earlier runs have left more than a day ahead of the clock does not count for that.
    /// \param rolled receives what it is now
    /// \return false if it cannot be renamed, and is where it was
    bool roll(Util::TimeUtils::Time now, RolledFile& rolled);

    /// Has `roll` look at the folder again, since another process may have rolled the file meanwhile.
    void forgetLast() { knowsLast_ = false; }

    /// Deletes the oldest files until the limits of the values hold. One that cannot be deleted counts no
    /// more: newer ones do not go in its stead.
    /// \param files all of them, as listed; receives those that are left
    /// \param liveSize what the live file adds to their sizes
    /// \return the path of the first one that cannot be deleted; empty if all is well
    std::string keep(const AppenderValues& values, std::uint64_t liveSize, Util::TimeUtils::Time now,
                     std::vector<RolledFile>& files) const;

    /// Deletes a file, packed or not.
    /// \return false if it is still there
    static bool remove(const std::string& path);

    /// \return the stamp of a file that is rolled at that time
    static std::string stampOf(Util::TimeUtils::Time time);

    /// \return the path of the live file that a rolled one was, packed, half packed or not; empty if the path is
    ///         not that of a rolled file
    static std::string livePathOf(const std::string& path);

    /// \return the path of a rolled file, packed, half packed or not, when it is not packed; empty if the path is
    ///         not that of a rolled file
    static std::string plainPathOf(const std::string& path);

private:
    void findLast(const std::string& latest);
    std::uint64_t sizeOf(const RolledFile& file) const;
    bool isTaken(const RolledFile& file) const;

    const std::string livePath_;
    bool knowsLast_ = false;
    RolledFile last_; ///< the newest one, if it is known
};

} // namespace Log
} // namespace ZAV
