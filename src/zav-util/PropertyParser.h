#pragma once

#include "zav-util/Properties.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ZAV {
namespace Util {

/// Checks the lines of a property file and turns them into properties.
class PropertyParser {
public:
    /// \param fileName the name that the error texts show
    explicit PropertyParser(const std::string& fileName);

    /// Adds the pair of every line to `properties`.
    /// \throw UtilException with the first line that breaks the format
    void parse(const std::vector<std::string>& lines, Properties& properties);

private:
    void parseLine(const std::string& line, Properties& properties) const;
    std::string parseKey(const std::string& piece) const;
    std::string parseValue(const std::string& piece) const;
    [[noreturn]] void reject(const std::string& problem, const std::string& detail = std::string()) const;

    std::string fileName_;
    std::size_t lineNumber_ = 0;
};

} // namespace Util
} // namespace ZAV
