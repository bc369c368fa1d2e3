#include "check/Findings.h"

#include "terminal/Paint.h"

#include <algorithm>
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

void Findings::addError(const PropertyLine& line, const std::string& id, const std::string& text) {
    add({line.number, Finding::AN_ERROR, id, line.key, text});
}

void Findings::addWarning(const PropertyLine& line, const std::string& id, const std::string& text) {
    add({line.number, Finding::A_WARNING, id, line.key, text});
}

std::vector<Finding> Findings::inOrder() const {
    std::vector<Finding> ordered = all_;
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return ordered;
}

} // namespace Tools
} // namespace ZAV
