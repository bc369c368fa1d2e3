#pragma once

#include "zav-util/Export.h"

#include <initializer_list>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZAV {
namespace Util {

/// A configuration: an ordered map from key to value, both strings, compared byte by byte.
///
/// Fill it in memory, with pairs in braces or the map's own operations (`properties["logger.root.level"] =
/// "INFO"`), which checks nothing, or read it from a property file, which checks every line. It has no lock:
/// one thread fills it, afterwards any number may read it.
class Properties : public std::map<std::string, std::string> {
public:
    class Entry;

    Properties() = default;

    /// Takes pairs of a key and a value: `Properties{{"logger.root.level", "INFO"}, {"appender.c",
    /// "StdoutAppender"}}`. Of several with the same key the first one counts, as in any map.
    Properties(std::initializer_list<Entry> entries);

    /// Braces with a key and a value alone, where those of the pairs are missing, are no file name either:
    /// without this, they would become one as the begin and the end of some text.
    Properties(const std::string& key, const std::string& value) = delete;

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

/// A pair in the braces of `Properties`. It is made from two texts; a `std::pair` of strings would also be
/// made from two pairs of braces, each of which it would take for the begin and the end of some text.
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
