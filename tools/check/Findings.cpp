#include "check/Findings.h"

#include <algorithm>

namespace ZAV {
namespace Tools {

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
