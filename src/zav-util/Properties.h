#pragma once

/// \file
/// Reads a property file, or holds a configuration that the program builds itself:
///
///     #include "log/LogSession.h"
///
///     int main() {
///         ZAV::Util::Properties properties("app.properties");
///         properties["logger.net.level"] = "DEBUG"; // whatever the file says
///         const ZAV::Log::LogSession session(properties);
///         // ...
///     }

#include "zav-util/Export.h"

#include <initializer_list>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZAV {
namespace Util {

/// A configuration: an ordered map from keys to values, both of them strings, compared byte by byte.
///
/// It is read from a property file, of which every line is checked, or filled in memory, by pairs in braces
/// or the functions of the map, where nothing is checked. It has no lock: one thread fills it, and afterwards
/// several threads may read it at once.
class Properties : public std::map<std::string, std::string> {
public:
    class Entry;

    Properties() = default;

    /// Takes pairs of a key and a value: `Properties{{"logger.root.level", "INFO"}, {"appender.c",
    /// "StdoutAppender"}}`. If a key occurs several times, the first one counts, as in any map.
    Properties(std::initializer_list<Entry> entries);

    /// Rejects a key and a value in a single pair of braces. Without this, the two would be taken for the
    /// begin and end iterators of a file name.
    Properties(const std::string& key, const std::string& value) = delete;

    /// Reads a property file: lines of `key = value`, empty lines, and comments that begin with "#".
    /// \param fileName absolute, or relative to the working directory
    /// \throw UtilException if the file cannot be read, or for the first malformed line
    ZAV_LOG_API explicit Properties(const std::string& fileName);

    /// Looks up a key.
    /// \param value receives the value if the key is present, and is not changed otherwise
    /// \return true if the key is present
    ZAV_LOG_API bool getProperty(const std::string& key, std::string& value) const;

    /// \return all keys, in ascending byte order
    ZAV_LOG_API std::vector<std::string> getKeys() const;
};

/// A pair in the braces of `Properties`. It takes two texts. A `std::pair` of strings could also be
/// constructed from two pairs in braces, each of which would be taken for the begin and end iterators of a
/// text.
class Properties::Entry {
public:
    template <
        typename Key, typename Value,
        std::enable_if_t<std::is_convertible_v<Key, std::string> && std::is_convertible_v<Value, std::string>,
                         int> = 0>
    Entry(Key&& key, Value&& value) : pair_(std::forward<Key>(key), std::forward<Value>(value)) {}

    template <
        typename Key, typename Value,
        std::enable_if_t<std::is_convertible_v<Key, std::string> && std::is_convertible_v<Value, std::string>,
                         int> = 0>
    Entry(const std::pair<Key, Value>& pair) : pair_(pair) {}

private:
    friend class Properties;
    value_type pair_;
};

inline Properties::Properties(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        insert(entry.pair_);
    }
}

} // namespace Util
} // namespace ZAV
