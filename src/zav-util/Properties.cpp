// Properties, the parser of their files, and the exception for malformed ones.

#include "zav-util/Properties.h"

#include "zav-util/Conversions.h"
#include "zav-util/FileUtils.h"
#include "zav-util/PropertyParser.h"
#include "zav-util/UtilException.h"

#include <algorithm>

namespace ZAV {
namespace Util {

namespace {

const char KEY_SYMBOLS[] = "-_.";
const char VALUE_SYMBOLS[] = "-_.:/\\ ";
const char WHITESPACE[] = " \t\f\v\n\r";

bool isLetterOrDigit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

bool holdsOnlyLettersDigitsAnd(const std::string& symbols, const std::string& text) {
    return std::all_of(text.begin(), text.end(), [&symbols](char c) {
        return isLetterOrDigit(c) || symbols.find(c) != std::string::npos;
    });
}

std::string trim(const std::string& text) {
    const std::string::size_type begin = text.find_first_not_of(WHITESPACE);
    if (begin == std::string::npos) {
        return std::string();
    }
    return text.substr(begin, text.find_last_not_of(WHITESPACE) - begin + 1);
}

/// Parses parts of a line, and reports errors with its position.
class Line {
public:
    Line(const std::string& fileName, std::size_t number) : fileName_(fileName), number_(number) {}

    std::string parseKey(const std::string& piece) const;
    std::string parseValue(const std::string& piece) const;
    [[noreturn]] void reject(const std::string& problem, const std::string& detail = std::string()) const;

private:
    const std::string& fileName_;
    std::size_t number_;
};

std::string Line::parseKey(const std::string& piece) const {
    std::string key = trim(piece);
    if (key.empty()) {
        reject("no key");
    }
    if (!holdsOnlyLettersDigitsAnd(KEY_SYMBOLS, key)) {
        reject("a malformed key", std::string(". Allowed symbols are letters, digits and ") + KEY_SYMBOLS);
    }
    return key;
}

std::string Line::parseValue(const std::string& piece) const {
    std::string value = trim(piece);
    if (value.empty()) {
        reject("no value");
    }
    if (!holdsOnlyLettersDigitsAnd(VALUE_SYMBOLS, value)) {
        reject("a malformed value",
               std::string(". Allowed symbols are letters, digits and ") + VALUE_SYMBOLS);
    }
    return value;
}

void Line::reject(const std::string& problem, const std::string& detail) const {
    throw UtilException("Property file " + fileName_ + " contains " + problem + " on line " +
                        toString(std::uint64_t{number_}) + detail);
}

} // namespace

PropertyParser::PropertyParser(const std::string& fileName) : fileName_(fileName) {}

void PropertyParser::parse(const std::vector<std::string>& lines, Properties& properties) const {
    std::size_t lineNumber = 0;
    for (const std::string& line : lines) {
        ++lineNumber;
        if (const std::optional<Property> property = parseLine(line, lineNumber)) {
            add(*property, lineNumber, properties);
        }
    }
}

std::optional<Property> PropertyParser::parseLine(const std::string& line, std::size_t lineNumber) const {
    const bool isComment = !line.empty() && line.front() == '#';
    if (line.empty() || isComment) {
        return std::nullopt;
    }
    const Line place(fileName_, lineNumber);
    const std::vector<std::string> pieces = split(line, '=');
    if (pieces.size() != 2) {
        place.reject("a malformed property");
    }
    const std::string key = place.parseKey(pieces[0]);
    return Property{key, place.parseValue(pieces[1])};
}

void PropertyParser::add(const Property& property, std::size_t lineNumber, Properties& properties) const {
    if (!properties.emplace(property.key, property.value).second) {
        Line(fileName_, lineNumber).reject("a property redefinition", "; key = '" + property.key + "'");
    }
}

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

UtilException::UtilException(const std::string& message) : std::runtime_error(message) {}

UtilException::UtilException(const std::string& message, const std::string& file, int line)
    : std::runtime_error(message + " from " + file + ":" + toString(std::int64_t{line})) {}

UtilException::~UtilException() = default;

} // namespace Util
} // namespace ZAV
