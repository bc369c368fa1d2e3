#pragma once

#include "zav-util/Export.h"

#include <map>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {

/// A configuration: an ordered map from key to value, both strings, compared byte by byte.
///
/// Fill it in memory with the map's own operations (`properties["logger.root.level"] = "INFO"`), which checks
/// nothing, or read it from a property file, which checks every line. It has no lock: one thread fills it,
/// afterwards any number may read it.
class Properties : public std::map<std::string, std::string> {
public:
    Properties() = default;

    /// Reads a property file: lines of `key = value`, empty lines, and comments that begin with "#".
    /// \param fileName relative to the current directory if it is not absolute
    /// \throw UtilException if the file cannot be read, or with the first line that breaks the format
    ZAV_LOG_API explicit Properties(const std::string& fileName);

    /// Looks a key up.
    /// \param value receives the value if the key is present; stays as it is otherwise
    /// \return true if the key is present
    ZAV_LOG_API bool getProperty(const std::string& key, std::string& value) const;

    /// \return all keys, in ascending byte order
    ZAV_LOG_API std::vector<std::string> getKeys() const;
};

} // namespace Util
} // namespace ZAV
