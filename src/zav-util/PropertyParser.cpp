#include "zav-util/PropertyParser.h"

#include "zav-util/Conversions.h"
#include "zav-util/StringUtils.h"
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

} // namespace

PropertyParser::PropertyParser(const std::string& fileName) : fileName_(fileName) {}

void PropertyParser::parse(const std::vector<std::string>& lines, Properties& properties) {
    lineNumber_ = 0;
    for (const std::string& line : lines) {
        ++lineNumber_;
        const bool isComment = !line.empty() && line.front() == '#';
        if (!line.empty() && !isComment) {
            parseLine(line, properties);
        }
    }
}

void PropertyParser::parseLine(const std::string& line, Properties& properties) const {
    const std::vector<std::string> pieces = split(line, '=');
    if (pieces.size() != 2) {
        reject("a malformed property");
    }
    const std::string key = parseKey(pieces[0]);
    const std::string value = parseValue(pieces[1]);
    if (!properties.emplace(key, value).second) {
        reject("a property redefinition", "; key = '" + key + "'");
    }
}

std::string PropertyParser::parseKey(const std::string& piece) const {
    std::string key = trim(piece);
    if (key.empty()) {
        reject("no key");
    }
    if (!holdsOnlyLettersDigitsAnd(KEY_SYMBOLS, key)) {
        reject("a malformed key", std::string(". Allowed symbols are letters, digits and ") + KEY_SYMBOLS);
    }
    return key;
}

std::string PropertyParser::parseValue(const std::string& piece) const {
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

void PropertyParser::reject(const std::string& problem, const std::string& detail) const {
    throw UtilException("Property file " + fileName_ + " contains " + problem + " on line " +
                        toString(std::uint64_t{lineNumber_}) + detail);
}

} // namespace Util
} // namespace ZAV
