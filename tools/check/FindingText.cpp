#include "check/FindingText.h"

#include "terminal/Paint.h"

#include <nlohmann/json.hpp>

namespace ZAV {
namespace Tools {

namespace {

const char* nameOf(Finding::Severity severity) {
    return severity == Finding::AN_ERROR ? "error" : "warning";
}

std::string colored(const Finding& finding) {
    const Paint paint = finding.severity == Finding::AN_ERROR ? Paint::RED : Paint::YELLOW;
    return painted(paint, nameOf(finding.severity));
}

} // namespace

std::string toText(const std::string& fileName, const Finding& finding, bool withColors) {
    const std::string severity = withColors ? colored(finding) : nameOf(finding.severity);
    const std::string key = finding.key.empty() ? std::string() : finding.key + ": ";
    return fileName + ':' + std::to_string(finding.line) + ": " + severity + ": " + key + finding.text +
           " [" + finding.id + ']';
}

std::string toJson(const std::string& fileName, const Finding& finding) {
    nlohmann::ordered_json object;
    object["file"] = fileName;
    object["line"] = finding.line;
    object["severity"] = nameOf(finding.severity);
    object["id"] = finding.id;
    object["key"] = finding.key;
    object["text"] = finding.text;
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace Tools
} // namespace ZAV
