#include "options/ColorOption.h"

#include "platform/Terminal.h"

#include <cstdlib>

namespace ZAV {
namespace Tools {

namespace {

std::string environmentValue(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

/// By convention: NO_COLOR with any value, or TERM=dumb.
bool isUnwanted() {
    return !environmentValue("NO_COLOR").empty() || environmentValue("TERM") == "dumb";
}

} // namespace

void ColorOption::addTo(CLI::App& command) {
    command
        .add_option("--color", choice_,
                    "Colours: \"auto\" uses them on a terminal, without NO_COLOR and TERM=dumb")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("auto|always|never");
}

bool ColorOption::isOn() const {
    return choice_ == "always" || (choice_ == "auto" && !isUnwanted() && Platform::showsColors());
}

} // namespace Tools
} // namespace ZAV
