#include "check/PropertyFile.h"

#include "config/PropertySource.h"
#include "zav-util/UtilException.h"

#include <optional>

namespace ZAV {
namespace Tools {

PropertyFile::PropertyFile(const std::string& name) {
    const Util::PropertyParser parser(name);
    std::size_t number = 0;
    for (const std::string& line : readPropertyLines(name)) {
        read(parser, line, ++number);
    }
}

void PropertyFile::read(const Util::PropertyParser& parser, const std::string& line, std::size_t number) {
    try {
        if (const std::optional<Util::Property> property = parser.parseLine(line, number)) {
            add(parser, *property, number);
        }
    } catch (const Util::UtilException& exception) {
        rejectedLines_.push_back({number, std::string(), exception.what()});
    }
}

void PropertyFile::add(const Util::PropertyParser& parser, const Util::Property& property,
                       std::size_t number) {
    try {
        parser.add(property, number, properties_);
        indices_.emplace(property.key, lines_.size());
        lines_.push_back({number, property.key, property.value});
    } catch (const Util::UtilException& exception) {
        rejectedLines_.push_back({number, property.key, exception.what()});
    }
}

const PropertyLine* PropertyFile::find(const std::string& key) const {
    const auto index = indices_.find(key);
    return index == indices_.end() ? nullptr : &lines_[index->second];
}

} // namespace Tools
} // namespace ZAV
