#pragma once

#include "zav-util/Properties.h"
#include "zav-util/PropertyParser.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

/// A key-value pair of a property file, with its line number.
struct PropertyLine {
    std::size_t number = 0; ///< counted from 1
    std::string key;
    std::string value;
};

/// A line of a property file that the library's parser rejects.
struct RejectedLine {
    std::size_t number = 0;
    std::string key; ///< the key if it is a duplicate; empty otherwise
    std::string problem;
};

/// A property file. Lines after those that the parser rejects are read as well.
class PropertyFile {
public:
    /// \throw Util::UtilException if it cannot be read, is a device, which may be endless, or holds more than 16 MB,
    ///        also from a pipe
    explicit PropertyFile(const std::string& name);

    /// \return the accepted pairs, in the order of the file
    const std::vector<PropertyLine>& lines() const { return lines_; }
    const std::vector<RejectedLine>& rejectedLines() const { return rejectedLines_; }

    /// \return the accepted pairs as the library would see them
    const Util::Properties& properties() const { return properties_; }

    /// \return the pair of a key; nullptr if the file does not have it
    const PropertyLine* find(const std::string& key) const;

private:
    void read(const Util::PropertyParser& parser, const std::string& line, std::size_t number);
    void add(const Util::PropertyParser& parser, const Util::Property& property, std::size_t number);

    std::vector<PropertyLine> lines_;
    std::map<std::string, std::size_t> indices_; ///< into `lines_`, by key
    std::vector<RejectedLine> rejectedLines_;
    Util::Properties properties_;
};

/// Reads a property file as the library would.
/// \throw Util::UtilException as the constructor of `PropertyFile` does, and for the first malformed line
Util::Properties readProperties(const std::string& fileName);

} // namespace Tools
} // namespace ZAV
