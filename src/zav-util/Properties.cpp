#include "zav-util/Properties.h"

#include "zav-util/FileUtils.h"
#include "zav-util/PropertyParser.h"

namespace ZAV {
namespace Util {

Properties::Properties(const std::string& fileName) {
    std::vector<std::string> lines;
    FileUtils::readLines(fileName, lines);
    PropertyParser(fileName).parse(lines, *this);
}

bool Properties::getProperty(const std::string& key, std::string& value) const {
    const const_iterator entry = find(key);
    if (entry == end()) {
        return false;
    }
    value = entry->second;
    return true;
}

std::vector<std::string> Properties::getKeys() const {
    std::vector<std::string> keys;
    keys.reserve(size());
    for (const value_type& entry : *this) {
        keys.push_back(entry.first);
    }
    return keys;
}

} // namespace Util
} // namespace ZAV
