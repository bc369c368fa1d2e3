#pragma once

#include "zav-util/Properties.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {

/// The key and value of one line of a property file.
struct Property {
    std::string key;
    std::string value;
};

/// Checks the lines of a property file and turns them into properties.
class PropertyParser {
public:
    /// \param fileName the name that error texts show
    explicit PropertyParser(const std::string& fileName);

    /// Adds the pair of every line to `properties`.
    /// \throw UtilException for the first malformed line
    void parse(const std::vector<std::string>& lines, Properties& properties) const;

    /// \param lineNumber counted from 1, for the error text
    /// \return nothing for an empty line and for a comment
    /// \throw UtilException if the line is malformed
    std::optional<Property> parseLine(const std::string& line, std::size_t lineNumber) const;

    /// Adds the pair of one line.
    /// \throw UtilException if the key is present already
    void add(const Property& property, std::size_t lineNumber, Properties& properties) const;

private:
    std::string fileName_;
};

} // namespace Util
} // namespace ZAV
