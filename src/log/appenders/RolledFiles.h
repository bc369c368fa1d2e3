#pragma once

#include "log/config/AppenderValues.h"
#include "zav-util/TimeUtils.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

/// A rolled file. Its name is the live file's, then ".<stamp>", or ".<stamp>-<number>" from the second file
/// with that stamp on, then ".gz" if it is packed.
struct RolledFile {
    std::string stamp; ///< YYYYMMDDTHHMMSSZ: when it was rolled, in UTC
    std::uint64_t number = 0;
    bool isPlain = false;
    bool isPacked = false; ///< may be set while the plain file still exists, which then takes precedence

    /// \return what follows the live file's name, without ".gz"
    std::string suffix() const;
};

/// The rolled files of a live file. They are never renamed, so their names give their order.
///
/// A packed file that is not complete yet has a name that is not a rolled file's, see `PART`. The object
/// belongs to one appender, whose lock guards it.
class RolledFiles {
public:
    static constexpr char PACKED[] = ".gz";
    static constexpr char PART[] = ".gz.part"; ///< suffix of a packed file that is not complete yet

    /// \param livePath the path of the live file
    explicit RolledFiles(const std::string& livePath);

    /// Lists the rolled files.
    /// \param files receives them, the oldest first
    /// \param parts receives the paths, without ".gz", of those that are partly packed
    /// \return false if the folder cannot be listed
    bool list(std::vector<RolledFile>& files, std::vector<std::string>& parts) const;

    /// \return the path of a file, without ".gz"
    std::string pathOf(const RolledFile& file) const { return livePath_ + file.suffix(); }

    /// Renames the live file, which this process must not have open, to the newest rolled name. Names only
    /// increase, even if the clock is set back; files of earlier runs more than a day ahead of the clock are
    /// disregarded.
    /// \param rolled receives the rolled file
    /// \return false if it cannot be renamed; it then stays where it was
    bool roll(Util::TimeUtils::Time now, RolledFile& rolled);

    /// Makes `roll` list the folder again, since another process may have rolled the file meanwhile.
    void forgetLast() { knowsLast_ = false; }

    /// Deletes the oldest files until the configured limits hold. One that cannot be deleted is not counted,
    /// so no newer one is deleted in its place.
    /// \param files all rolled files, as listed; receives those that are left
    /// \param liveSize size of the live file, which counts towards the limit
    /// \return the path of the first file that could not be deleted; empty if there is none
    std::string keep(const AppenderValues& values, std::uint64_t liveSize, Util::TimeUtils::Time now,
                     std::vector<RolledFile>& files) const;

    /// Deletes a file, packed or not.
    /// \return false if it still exists
    static bool remove(const std::string& path);

    /// \return the stamp of a file rolled at that time
    static std::string stampOf(Util::TimeUtils::Time time);

    /// \return the path of the live file to which a rolled file, plain, packed or partly packed, belongs; empty if the
    ///         path is not that of a rolled file
    static std::string livePathOf(const std::string& path);

    /// \return the plain path of a rolled file, plain, packed or partly packed; empty if the path is not that of a
    ///         rolled file
    static std::string plainPathOf(const std::string& path);

private:
    void findLast(const std::string& latest);
    std::uint64_t sizeOf(const RolledFile& file) const;
    bool isTaken(const RolledFile& file) const;

    const std::string livePath_;
    bool knowsLast_ = false;
    RolledFile last_; ///< the newest rolled file, if `knowsLast_`
};

} // namespace Log
} // namespace ZAV
