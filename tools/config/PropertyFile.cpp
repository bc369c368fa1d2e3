#include "config/PropertyFile.h"

#include "zav-util/FileUtils.h"
#include "zav-util/UtilException.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t LARGEST = 16 * 1024 * 1024;

[[noreturn]] void refuse(const std::string& fileName, const std::string& reason) {
    throw Util::UtilException("Unable to open file: " + fileName + reason);
}

bool isDevice(const std::string& fileName) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(fileName, error);
    return std::filesystem::is_character_file(status) || std::filesystem::is_block_file(status);
}

/// Does not rely on the file size, which a pipe does not have and which may be out of date for a file.
std::string readBounded(const std::string& fileName) {
    std::ifstream file(fileName);
    std::string text;
    std::string block(std::size_t{64} * 1024, '\0');
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        text.append(block, 0, static_cast<std::size_t>(file.gcount()));
        if (text.size() > LARGEST) {
            refuse(fileName, " has more than the 16 MB of the largest property file");
        }
    }
    // A directory can be opened on some systems, but not read.
    if (!file.is_open() || file.bad()) {
        std::vector<std::string> none;
        Util::FileUtils::readLines(fileName, none); // throws the text that a program would show
    }
    return text;
}

/// \return the lines without their line ends
std::vector<std::string> readPropertyLines(const std::string& fileName) {
    if (isDevice(fileName)) {
        refuse(fileName, " is a device");
    }
    std::istringstream text(readBounded(fileName));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        const bool endedByLineFeed = !text.eof();
        if (endedByLineFeed && !line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

} // namespace

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

Util::Properties readProperties(const std::string& fileName) {
    Util::Properties properties;
    Util::PropertyParser(fileName).parse(readPropertyLines(fileName), properties);
    return properties;
}

} // namespace Tools
} // namespace ZAV
